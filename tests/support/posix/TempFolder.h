#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace kovra {

inline void writeFile(const std::filesystem::path& path, std::string_view content) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content << std::flush;
    if (!file) throw std::runtime_error("cannot write " + path.string());
}

// Returns the contents of the file, or "missing" if it cannot be opened.
inline std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "missing";
}

// A folder that is removed with its contents at the end of the test.
class TempFolder {
  public:
    // `memory` creates the folder in memory if possible, for tests that sync thousands of times.
    enum class Where { disk, memory };

    explicit TempFolder(Where where = Where::disk) {
        const bool inMemory = where == Where::memory && ::access("/dev/shm", W_OK | X_OK) == 0;
        const auto parent = inMemory ? std::filesystem::path("/dev/shm") : std::filesystem::temp_directory_path();
        std::string name = (parent / "kovra-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
        path_ = name;
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }
    std::string operator/(std::string_view name) const { return (path_ / name).string(); }

    // Returns the names in this folder, or in a folder inside it.
    std::set<std::string> names(std::string_view inside = "") const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_ / inside)) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

  private:
    std::filesystem::path path_;
};

}  // namespace kovra
