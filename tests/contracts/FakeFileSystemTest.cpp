#include "tests/contracts/FileSystemContract.h"
#include "tests/fakes/FakeFileSystem.h"

namespace kovra {
namespace {

class FakeFileSystemDriver {
  public:
    FileSystem& files() { return files_; }
    std::string path() const { return "/flag"; }
    std::string content() const { return files_.contents.at(path()); }
    void obstruct() { files_.failAlways("No space left on device"); }

  private:
    FakeFileSystem files_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakeFileSystem, FileSystemContract, FakeFileSystemDriver);

}  // namespace
}  // namespace kovra
