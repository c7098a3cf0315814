#pragma once

#include <cstddef>
#include <string>
#include <utility>

namespace kovra {

// A small text file that is read and replaced whole. Errors are the system's numbers, 0 is success; nothing is logged.
class SmallTextFile {
  public:
    // Far above what anybody's choices or desktop entries take. A file beyond it is refused when read, and never
    // written.
    static constexpr std::size_t largestSize = 4 << 20;

    explicit SmallTextFile(std::string path) : path_(std::move(path)) {}
    const std::string& path() const { return path_; }

    // ENOENT where there is no file. Only a plain file is read, through a link too.
    int read(std::string& text) const;

    enum class Old { replaced, keptAside };
    enum class Link { followed, replaced };
    // Makes the text the whole content, through a temporary beside the file: after a crash or on a full disk the file
    // is what it was or what it was to become. Makes missing folders, for the user alone. A link at the path stays and
    // the file that it leads to is replaced, or the other way round. The old file is kept aside under a name that
    // nothing has.
    int replace(const std::string& text, Old old, Link link = Link::followed) const;

  private:
    std::string path_;
};

}  // namespace kovra
