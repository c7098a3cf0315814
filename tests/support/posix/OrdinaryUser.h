#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>

namespace kovra {

// While this object exists, tests that run as root act as a user without privileges, so that file permissions apply.
class OrdinaryUser {
  public:
    OrdinaryUser() {
        if (!wasRoot_) return;
        if (::setegid(nobody) != 0 || ::seteuid(nobody) != 0) throw std::runtime_error("cannot become another user");
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser() {
        if (!wasRoot_) return;
        static_cast<void>(::seteuid(0));
        static_cast<void>(::setegid(0));
    }

    // Makes that user the owner of a file. Must be called before the constructor.
    static void give(const std::filesystem::path& path) {
        if (::geteuid() == 0 && ::chown(path.c_str(), nobody, nobody) != 0) {
            throw std::runtime_error("cannot give away " + path.string());
        }
    }

  private:
    static constexpr unsigned nobody = 65534;
    const bool wasRoot_ = ::geteuid() == 0;
};

// Changes the mode of a file or folder. Restores the mode at the end, so that the file or folder can be removed.
class Rights {
  public:
    Rights(std::filesystem::path path, ::mode_t mode) : path_(std::move(path)) {
        struct stat status{};
        if (::stat(path_.c_str(), &status) != 0 || ::chmod(path_.c_str(), mode) != 0) {
            throw std::runtime_error("cannot change the rights of " + path_.string());
        }
        before_ = status.st_mode;
    }
    Rights(const Rights&) = delete;
    Rights& operator=(const Rights&) = delete;
    ~Rights() { static_cast<void>(::chmod(path_.c_str(), before_)); }

  private:
    std::filesystem::path path_;
    ::mode_t before_ = 0;
};

}  // namespace kovra
