#pragma once

#include <acl/libacl.h>
#include <fcntl.h>
#include <grp.h>
#include <linux/capability.h>
#include <sys/acl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "helper/Descriptor.h"
#include "helper/Handles.h"

namespace kovra::helper {

// UIDs that are unlikely to exist on any machine.
inline constexpr uid_t alice = 61'001;
inline constexpr uid_t bob = 61'002;

// An object during whose lifetime the thread has no effective capabilities, like the daemon in its unit.
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

// An object during whose lifetime a test that runs as root has this effective UID and GID. It has no effect for an
// ordinary user, who owns all files of the test.
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

using AccessList = Handle<std::remove_pointer_t<acl_t>, ::acl_free>;

// Returns the access control list of a file in the short text form of acl(5), with numeric IDs. Returns "none" if the
// list cannot be read, and "unreadable" if it cannot be converted.
inline std::string accessList(const std::string& path) {
    const AccessList list(acl_get_file(path.c_str(), ACL_TYPE_ACCESS));
    if (!list) return "none";
    const Handle<char, ::acl_free> text(acl_to_any_text(list.get(), nullptr, ',', TEXT_ABBREVIATE | TEXT_NUMERIC_IDS));
    return text ? text.get() : "unreadable";
}

// Sets the access control list of a file or folder, given in the text form of acl(5).
inline void setAccessList(const std::string& path, const std::string& text) {
    const AccessList list(acl_from_text(text.c_str()));
    if (!list || acl_set_file(path.c_str(), ACL_TYPE_ACCESS, list.get()) != 0)
        throw std::runtime_error("cannot set the access list of " + path);
}

// Returns whether this user may write the file. A test that runs as root opens the file as that user. An ordinary user
// cannot do that, so the function reads the access control list instead.
inline bool mayWrite(uid_t user, const std::string& path) {
    if (::geteuid() == 0) {
        const ActingAs other(user);
        return Descriptor(::open(path.c_str(), O_WRONLY | O_CLOEXEC)).isOpen();
    }
    const std::string entries = accessList(path);
    const std::string named = ",u:" + std::to_string(user) + ":";
    const auto at = entries.find(named);
    const auto others = entries.find(",o::");
    if (others == std::string::npos) throw std::runtime_error("no access list: " + path);
    return entries.at(at == std::string::npos ? others + 5 : at + named.size() + 1) == 'w';
}

}  // namespace kovra::helper
