#pragma once

#include <sys/types.h>

#include <optional>
#include <utility>

#include "helper/Descriptor.h"
#include "helper/flag/WordCheck.h"

namespace kovra::helper {

// An open flag file, a regular file of the given owner. Opening it follows no link, never blocks and changes nothing.
class FlagFile {
  public:
    enum class Content { off, on };

    // Opens the file. Returns nothing if it cannot be opened, or if it is not a regular file of the owner.
    static std::optional<FlagFile> open(int folder, const char* name, uid_t owner);
    // Creates a file with this content that only its owner can read and write. Fails if a file of that name exists.
    // After a failure it returns nothing, sets errno and leaves no incomplete file behind.
    static std::optional<FlagFile> create(int folder, const char* name, Content content);

    // "on" if the file consists of exactly these two bytes, else "off". Reads at most four bytes.
    Content content() const;
    // Which file it is, and when it was last written.
    WordCheck::Version version() const;
    // If the file is longer than three bytes, the length of "off", or takes more than 4 KiB on the disk: truncates it
    // to at most three bytes, and frees space that was allocated beyond its end. Does not change content(). Ignores
    // failures.
    void truncate() const;

    // Returns whether a process has the file open for writing, maybe without the right to open it again. Only for the
    // owner of the file. Returns false on a file system that cannot tell.
    bool isOpenForWriting() const;
    // Replaces a content other than "on" by the word "off". Ignores failures.
    void cleanContent() const;
    // Whether the file has a hard link in this folder besides `name`. Hard links in other folders do not count. True
    // also if that cannot be found out.
    bool hasOtherNameIn(int folder, const char* name) const;

    // Whether the file's file system is writable. False also if that cannot be found out. After a disk error the kernel
    // may make a file system read-only, without any event.
    bool isOnAWritableDisk() const;

    // Whether the access control list is exactly the one that grantWriteTo() sets for this user, or for no user.
    bool isWritableBy(std::optional<uid_t> user) const;
    // The user for whom grantWriteTo() has set the access control list. Nothing if the list is any other one.
    std::optional<uid_t> writer() const;
    // Lets exactly this user, or no user, open the file for writing besides its owner. Descriptors that are already
    // open stay writable. Returns false, with errno set, if that fails.
    bool grantWriteTo(std::optional<uid_t> user) const;

  private:
    explicit FlagFile(Descriptor file) : file_(std::move(file)) {}

    Descriptor openForWriting() const;

    Descriptor file_;
};

}  // namespace kovra::helper
