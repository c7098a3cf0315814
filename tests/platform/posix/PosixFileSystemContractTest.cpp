#include <filesystem>

#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "tests/contracts/FileSystemContract.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

class PosixDriver {
  public:
    FileSystem& files() { return files_; }
    std::string path() const { return folder_ / "state"; }
    std::string content() const { return readFile(path()); }
    void obstruct() { std::filesystem::remove_all(folder_.path()); }

  private:
    TempFolder folder_;
    PosixFileSystem files_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(PosixFileSystem, FileSystemContract, PosixDriver);

}  // namespace
}  // namespace kovra
