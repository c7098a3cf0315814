#include "BLE_kovra/app/StatusIcon.h"

namespace kovra {

Drawing makeIcon(bool active) {
    Drawing icon{.name = active ? "ble-kovra-muted-symbolic" : "ble-kovra-symbolic", .size = {18, 18}, .strokes = {}};
    icon.strokes.push_back({RoundedRectangle{.origin = {2.5, 4}, .size = {13, 10}, .cornerRadii = {2, 2}}, 1.2});
    icon.strokes.push_back({Segment{.from = {9, 4}, .to = {9, 9}}, 1.0});
    if (active) icon.strokes.push_back({Segment{.from = {3, 3}, .to = {15, 15}}, 1.6});
    return icon;
}

}  // namespace kovra
