#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/Environment.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {

// The files of LXQt in a temporary folder, which the environment variables of the base directories name: `config` and
// `data` for the user, `system-config` and `system-data` for the system.
class LxqtFiles {
  public:
    LxqtFiles() {
        environment_.set("XDG_CONFIG_HOME", path("config"));
        environment_.set("XDG_CONFIG_DIRS", path("system-config"));
        environment_.set("XDG_DATA_HOME", path("data"));
        environment_.set("XDG_DATA_DIRS", path("system-data"));
    }

    std::string path(const std::string& file) const { return folder_.path() / file; }
    void write(const std::string& file, const std::string& text) const {
        std::filesystem::create_directories(std::filesystem::path(path(file)).parent_path());
        std::ofstream(path(file)) << text;
    }
    void choose(const std::string& theme) const { write("config/lxqt/lxqt.conf", "[General]\ntheme=" + theme + "\n"); }
    // Adds the themes "light" and "dark".
    void addThemes() const {
        write("data/lxqt/themes/light/lxqt-panel.qss", "Plugin > QToolButton { color: black; }");
        write("data/lxqt/themes/dark/lxqt-panel.qss", "Plugin > QToolButton { color: #DEDEDE; }");
    }

  private:
    TempFolder folder_;
    Environment environment_;
};

}  // namespace kovra
