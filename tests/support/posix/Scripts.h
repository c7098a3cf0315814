#pragma once

#include <sys/stat.h>

#include <string>

#include "tests/support/posix/TempFolder.h"

namespace kovra {

// Shell scripts as programs for a test. The variable $here of a script contains the path of its folder.
class Scripts {
  public:
    // Creates a script and returns its path.
    std::string make(const std::string& text, const std::string& name = "program") const {
        const std::string path = folder_ / name;
        writeFile(path, "#!/bin/sh\nhere='" + folder_.path().string() + "'\n" + text + "\n");
        ::chmod(path.c_str(), 0755);
        return path;
    }
    std::string operator/(const std::string& name) const { return folder_ / name; }
    // Returns what a program has written to this file of the folder; empty if there is no such file.
    std::string read(const std::string& name) const {
        const std::string text = readFile(folder_ / name);
        return text == "missing" ? "" : text;
    }

  private:
    TempFolder folder_;
};

}  // namespace kovra
