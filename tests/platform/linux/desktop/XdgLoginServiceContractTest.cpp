#include <filesystem>
#include <optional>

#include "BLE_kovra/platform/linux/desktop/XdgLoginService.h"
#include "tests/contracts/LoginServiceContract.h"
#include "tests/support/Environment.h"
#include "tests/support/posix/OrdinaryUser.h"
#include "tests/support/posix/Scripts.h"

namespace kovra {
namespace {

class XdgDriver {
  public:
    XdgDriver() {
        environment_.set("XDG_CONFIG_HOME", own_);
        environment_.set("XDG_CONFIG_DIRS", scripts_ / "nothing");
        std::filesystem::create_directories(own_ + "/autostart");
    }
    LoginService& service() { return service_; }
    void obstruct() {
        OrdinaryUser::give(scripts_ / "");
        for (const auto& entry : std::filesystem::recursive_directory_iterator(scripts_ / ""))
            OrdinaryUser::give(entry.path());
        user_.emplace();
        rights_.emplace(own_ + "/autostart", 0500);
    }

  private:
    Scripts scripts_;
    Environment environment_;
    std::string own_ = scripts_ / "own";
    XdgLoginService service_{scripts_.make("")};
    std::optional<OrdinaryUser> user_;
    std::optional<Rights> rights_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(XdgLoginService, LoginServiceContract, XdgDriver);

}  // namespace
}  // namespace kovra
