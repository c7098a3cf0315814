#pragma once

#include <sys/types.h>

#include <optional>

#include "helper/Descriptor.h"

namespace kovra::helper {

// One file of the flag's kind: a plain file of the owner's, opened without following, waiting for or changing anything.
class FlagFile {
  public:
    enum class Content { off, on };

    // Empty where the name stands for nothing, or for anything but such a file.
    static std::optional<FlagFile> open(int folder, const char* name, uid_t owner);
    // Makes one of this content that nobody else can write; only where the name stands for nothing yet. Empty, with
    // errno set and nothing left behind, where that fails.
    static std::optional<FlagFile> create(int folder, const char* name, Content content);

    // On is exactly the two bytes "on"; all else is off. Reads four bytes at the most.
    Content content() const;
    // Takes away whatever is longer than any content, and the room on the disk that is set aside for more; what it says
    // stays the same.
    void cut() const;
    // Also known by another name, and so possibly written to unseen.
    bool hasOtherNames() const;

    // Whether exactly this user may write to it beside the owner, or nobody.
    bool isWritableBy(std::optional<uid_t> user) const;
    // Who may, where that is exactly one user.
    std::optional<uid_t> writer() const;
    // From now on exactly this user may open it for writing, or nobody. False, with errno set, where that fails.
    bool letWrite(std::optional<uid_t> user) const;

  private:
    explicit FlagFile(Descriptor file) : file_(std::move(file)) {}

    Descriptor file_;
};

}  // namespace kovra::helper
