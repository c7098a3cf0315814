#include <map>
#include <string>
#include <vector>

#include "tests/contracts/HIDManagerContract.h"
#include "tests/platform/linux/hid/UdevHIDRig.h"

namespace kovra {
namespace {

class UdevDriver {
  public:
    HIDService& service() { return rig_.service; }

    std::vector<std::string> attach(const DeviceDescription& device) {
        std::vector<std::string> names;
        for (int i = 0; i < device.interfaceCount; ++i) {
            MockHIDNode node{.name = rig_.bus.nextName(), .product = device.product};
            if (!device.registered) node.name += "-unnumbered";
            node.id = device.vendorID ? hidID(*device.vendorID, *device.productID) : "none";
            rig_.bus.plug(node);
            names.push_back(node.name);
            nodes_[node.name] = node;
        }
        return names;
    }
    void detach(const std::vector<std::string>& names) {
        for (const std::string& name : names) rig_.bus.unplug(name);
    }
    void rename(const std::vector<std::string>& names, const std::string& product) {
        for (const std::string& name : names) {
            nodes_[name].product = product;
            rig_.bus.updateNode(nodes_[name]);
            rig_.bus.sendEvent(name, "bind");
        }
    }
    void settle() { rig_.settle(); }

  private:
    static std::string hidID(std::int64_t vendor, std::int64_t product) {
        char text[32];
        std::snprintf(text, sizeof text, "0003:%08llX:%08llX", static_cast<unsigned long long>(vendor),
                      static_cast<unsigned long long>(product));
        return text;
    }

    UdevHIDRig rig_;
    std::map<std::string, MockHIDNode> nodes_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(UdevHIDManager, HIDManagerContract, UdevDriver);

}  // namespace
}  // namespace kovra
