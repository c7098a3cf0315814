#pragma once

#include <acl/libacl.h>
#include <grp.h>
#include <linux/capability.h>
#include <sys/acl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <fcntl.h>

#include <array>
#include <stdexcept>
#include <string>

namespace kovra::helper {

// Users that no machine has.
inline constexpr uid_t alice = 61'001;
inline constexpr uid_t bob = 61'002;

// For as long as it lives, root has no capability, as in the daemon's unit. Nobody else has one anyway.
class WithoutCapabilities {
  public:
    WithoutCapabilities() {
        if (!set({}, &before_)) throw std::runtime_error("cannot give up capabilities");
    }
    WithoutCapabilities(const WithoutCapabilities&) = delete;
    WithoutCapabilities& operator=(const WithoutCapabilities&) = delete;
    ~WithoutCapabilities() { static_cast<void>(set(before_, nullptr)); }

  private:
    using Effective = std::array<__u32, _LINUX_CAPABILITY_U32S_3>;

    static bool set(const Effective& effective, Effective* before) {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> data{};
        if (::syscall(SYS_capget, &header, data.data()) != 0) return false;
        for (std::size_t i = 0; i < data.size(); ++i) {
            if (before != nullptr) (*before)[i] = data[i].effective;
            data[i].effective = effective[i];
        }
        return ::syscall(SYS_capset, &header, data.data()) == 0;
    }

    Effective before_{};
};

// For as long as it lives, a test that runs as root is this user. Others stay who they are, the owner of all that they
// make.
class ActingAs {
  public:
    explicit ActingAs(uid_t user) {
        if (!wasRoot_ || user == 0) return;
        if (::setgroups(0, nullptr) != 0 || ::setegid(user) != 0 || ::seteuid(user) != 0) {
            throw std::runtime_error("cannot become another user");
        }
    }
    ActingAs(const ActingAs&) = delete;
    ActingAs& operator=(const ActingAs&) = delete;
    ~ActingAs() {
        if (!wasRoot_) return;
        static_cast<void>(::seteuid(0));
        static_cast<void>(::setegid(0));
    }

  private:
    const bool wasRoot_ = ::geteuid() == 0;
};

// As getfacl shows it, with numbers for names.
inline std::string accessList(const std::string& path) {
    acl_t list = acl_get_file(path.c_str(), ACL_TYPE_ACCESS);
    if (list == nullptr) return "none";
    char* text = acl_to_any_text(list, nullptr, ',', TEXT_ABBREVIATE | TEXT_NUMERIC_IDS);
    const std::string entries = text == nullptr ? "unreadable" : text;
    acl_free(text);
    acl_free(list);
    return entries;
}

// Whether this user may write to the file. Root becomes that user and tries; whoever cannot become another user reads
// it off the list, by which the kernel decides.
inline bool mayWrite(uid_t user, const std::string& path) {
    if (::geteuid() == 0) {
        const ActingAs other(user);
        const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
        if (file >= 0) ::close(file);
        return file >= 0;
    }
    const std::string entries = accessList(path);
    const std::string named = ",u:" + std::to_string(user) + ":";
    const auto at = entries.find(named);
    const auto others = entries.find(",o::");
    if (others == std::string::npos) throw std::runtime_error("no access list: " + path);
    return entries.at(at == std::string::npos ? others + 5 : at + named.size() + 1) == 'w';
}

}  // namespace kovra::helper
