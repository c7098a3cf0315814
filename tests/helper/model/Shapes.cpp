#include "tests/helper/model/World.h"

namespace kovra::helper::model {

namespace {

Device shape(const std::string& name, const std::string& tag, const std::string& bus, const std::string& vendor,
             const std::string& hid) {
    Device device;
    device.name = name;
    device.properties = {{"ID_INPUT", "1"}, {tag, "1"}};
    device.bus = bus;
    device.vendor = vendor;
    device.hid = hid;
    return device;
}

}  // namespace

const std::vector<Shape>& shapes() {
    static const std::vector<Shape> all = [] {
        const std::string hid = "0018:06CB:CD8B.0001";
        std::vector<Shape> made{
            {shape("SYNA8004:00 06CB:CD8B Touchpad", "ID_INPUT_TOUCHPAD", "0018", "06cb", hid), true, false},
            {shape("SYNA8004:00 06CB:CD8B Mouse", "ID_INPUT_MOUSE", "0018", "06cb", hid), false, true},
            {shape("AlpsPS/2 ALPS GlidePoint", "ID_INPUT_TOUCHPAD", "0011", "0002", ""), true, false},
            {shape("Magic Trackpad", "ID_INPUT_TOUCHPAD", "0005", "05ac", "0005:05AC:030E.0002"), false, false},
            {shape("USB Optical Mouse", "ID_INPUT_MOUSE", "0003", "046d", "0003:046D:C077.0003"), false, false},
            {shape("TPPS/2 IBM TrackPoint", "ID_INPUT_MOUSE", "0011", "0002", ""), false, false},
            {shape("SYNA8004:00 06CB:CD8B Mouse", "ID_INPUT_MOUSE", "0018", "06cb", hid), false, false},
            {shape("Remote touchpad", "ID_INPUT_TOUCHPAD", "0006", "0000", ""), false, false},
        };
        made[5].device.properties["ID_INPUT_POINTINGSTICK"] = "1";
        made[6].device.stick = "21";  // its driver says that it is a pointing stick
        made[7].device.isVirtual = true;
        return made;
    }();
    return all;
}

}  // namespace kovra::helper::model
