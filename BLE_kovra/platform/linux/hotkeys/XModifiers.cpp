#include "BLE_kovra/platform/linux/hotkeys/XModifiers.h"

#include <cstdlib>
#include <span>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

namespace {

// Keysyms of the X protocol.
constexpr xcb_keysym_t symbolScrollLock = 0xFF14;
constexpr xcb_keysym_t symbolNumLock = 0xFF7F;
constexpr xcb_keysym_t symbolAltLeft = 0xFFE9;
constexpr xcb_keysym_t symbolAltRight = 0xFFEA;

void assign(XModifiers& modifiers, std::span<const xcb_keysym_t> symbols, std::uint16_t bit) {
    for (const xcb_keysym_t symbol : symbols) {
        if (symbol == symbolAltLeft || symbol == symbolAltRight) modifiers.alt = bit;
        if (symbol == symbolNumLock) modifiers.numLock = bit;
        if (symbol == symbolScrollLock) modifiers.scrollLock = bit;
    }
}

}  // namespace

std::vector<std::uint16_t> XModifiers::lockSets() const {
    std::vector<std::uint16_t> sets{0};
    for (const std::uint16_t lock : {static_cast<std::uint16_t>(XCB_MOD_MASK_LOCK), numLock, scrollLock}) {
        if (lock == 0) continue;
        for (std::size_t i = 0, known = sets.size(); i < known; ++i)
            sets.push_back(static_cast<std::uint16_t>(sets[i] | lock));
    }
    return sets;
}

XModifierQuery::XModifierQuery(xcb_connection_t* connection) : connection_(connection) {
    const xcb_setup_t* setup = xcb_get_setup(connection);
    const int keys = setup->max_keycode - setup->min_keycode + 1;
    modifierMapping_ = xcb_get_modifier_mapping(connection);
    keyboardMapping_ = xcb_get_keyboard_mapping(connection, setup->min_keycode, static_cast<std::uint8_t>(keys));
}

XModifiers XModifierQuery::read() const {
    XModifiers modifiers;
    const Allocated<xcb_get_modifier_mapping_reply_t> keys{
        xcb_get_modifier_mapping_reply(connection_, modifierMapping_, nullptr)};
    const Allocated<xcb_get_keyboard_mapping_reply_t> symbols{
        xcb_get_keyboard_mapping_reply(connection_, keyboardMapping_, nullptr)};
    if (!keys || !symbols) return modifiers;

    const std::size_t firstKey = xcb_get_setup(connection_)->min_keycode;
    const std::size_t symbolsPerKey = symbols->keysyms_per_keycode;
    const std::span symbolsOfAll{xcb_get_keyboard_mapping_keysyms(symbols.get()),
                                 static_cast<std::size_t>(xcb_get_keyboard_mapping_keysyms_length(symbols.get()))};
    const std::size_t keysPerModifier = keys->keycodes_per_modifier;
    const xcb_keycode_t* keycodes = xcb_get_modifier_mapping_keycodes(keys.get());

    constexpr std::size_t firstFree = XCB_MAP_INDEX_1;  // after Shift, Lock and Control
    for (std::size_t modifier = firstFree; modifier <= XCB_MAP_INDEX_5; ++modifier) {
        for (std::size_t i = 0; i < keysPerModifier; ++i) {
            const std::size_t key = keycodes[modifier * keysPerModifier + i];
            const std::size_t offset = (key - firstKey) * symbolsPerKey;
            if (key < firstKey || offset + symbolsPerKey > symbolsOfAll.size()) continue;
            assign(modifiers, symbolsOfAll.subspan(offset, symbolsPerKey), static_cast<std::uint16_t>(1U << modifier));
        }
    }
    return modifiers;
}

}  // namespace kovra
