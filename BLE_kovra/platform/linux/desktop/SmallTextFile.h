#pragma once

#include <cstddef>
#include <string>
#include <utility>

namespace kovra {

// A small text file that is always read and replaced as a whole. The functions return an errno value, or 0 for success,
// and log nothing.
class SmallTextFile {
  public:
    // 4 MiB, far larger than any preferences file or desktop entry. Reading a larger file or writing a larger text
    // fails with EFBIG.
    static constexpr std::size_t largestSize = 4 << 20;

    explicit SmallTextFile(std::string path) : path_(std::move(path)) {}
    const std::string& path() const { return path_; }

    // Reads the file into `text`. Returns ENOENT if there is no file. Follows symbolic links, and reads regular files
    // only.
    int read(std::string& text) const;

    enum class Old { replaced, keptAside };
    enum class Link { followed, replaced };
    // Replaces the contents of the file with `text`, through a temporary file in the same directory. After a crash or
    // on a full disk, the file has either its old or its new contents. Missing directories are created with access for
    // the user only. `link` selects whether a symbolic link at the path is followed or replaced. Old::keptAside keeps
    // the old file, with .damaged, .damaged-2 and so on appended to its name.
    int replace(const std::string& text, Old old, Link link = Link::followed) const;

  private:
    std::string path_;
};

}  // namespace kovra
