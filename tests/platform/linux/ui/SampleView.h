#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/View.h"

namespace kovra::sample {

// Views like that of the settings window, for tests of the widgets that show them.

struct Texts {
    std::string title = "BLE-kovra — trackpad control";
    std::string block = "Mute trackpad";
    std::string mode = "Mode:";
    std::string always = "Always";
    std::string onDevice = "When the selected mouse is connected";
    std::string chooseMouse = "Choose a mouse";
    std::string hint =
        "In “when a mouse is connected” mode the trackpad is muted while the selected device is connected. Disconnect "
        "the mouse — the trackpad works again.";
    std::string noDevices = "No devices found. Connect a mouse.";
    std::string disconnected = "disconnected";
    std::string status = "Trackpad active";
    std::string developedBy = "Developed by: Tamsin Orlek ·";
};

struct Device {
    std::string id;
    std::string name;
    bool isConnected = true;
    bool isChosen = false;
};

struct Content {
    Texts texts;
    bool isEnabled = true;
    std::string mode = "onDevice";
    bool isMuted = false;
    std::vector<Device> devices;
};

inline View text(std::string content) { return {Text{std::move(content)}, {}, {}, {}}; }

inline View dot(bool isLit) {
    const Circle circle = isLit ? Circle{Color::green, 1} : Circle{Color::gray, 0.4};
    return View{circle, {}, {}, {}}.frame({.width = 8, .height = 8});
}

inline View row(std::optional<double> spacing, std::vector<View> children) {
    return {Stack{Stack::Axis::horizontal, Alignment::center, spacing}, std::move(children), {}, {}};
}

inline View column(double spacing, std::vector<View> children) {
    return {Stack{Stack::Axis::vertical, Alignment::leading, spacing}, std::move(children), {}, {}};
}

inline View toggle(bool isOn, View label) {
    std::vector<View> labels;
    labels.push_back(std::move(label));
    return {Toggle{isOn, {}}, std::move(labels), {}, {}};
}

inline View deviceRow(const Device& device, const Texts& texts) {
    std::vector<View> label{dot(device.isConnected), text(device.name), {Spacer{}, {}, {}, {}}};
    if (!device.isConnected)
        label.push_back(text(texts.disconnected).font(Font::caption2).foregroundColor(Color::secondary));
    return toggle(device.isChosen, row({}, std::move(label))).identified(device.id);
}

inline View deviceArea(const Content& content) {
    if (content.devices.empty()) {
        return text(content.texts.noDevices)
            .foregroundColor(Color::secondary)
            .frame({.maxWidth = Frame::unbounded})
            .verticalPadding(16);
    }
    std::vector<View> rows;
    for (const Device& device : content.devices) rows.push_back(deviceRow(device, content.texts));
    std::vector<View> scrolled;
    scrolled.push_back(column(6, std::move(rows)).verticalPadding(4));
    return View{ScrollView{}, std::move(scrolled), {}, {}}.frame({.maxHeight = 200});
}

inline View view(const Content& content) {
    const Texts& texts = content.texts;
    const Picker mode{texts.mode, {{texts.always, "always"}, {texts.onDevice, "onDevice"}}, content.mode, {}};
    return column(14, {text(texts.title).font(Font::headline),
                       toggle(content.isEnabled, text(texts.block)).font(Font::body),
                       {mode, {}, {}, {}},
                       {Divider{}, {}, {}, {}},
                       text(texts.chooseMouse).font(Font::subheadline, true),
                       text(texts.hint).font(Font::caption).foregroundColor(Color::secondary).fixedSize(false, true),
                       deviceArea(content),
                       {Divider{}, {}, {}, {}},
                       row({}, {dot(content.isMuted),
                                text(texts.status).font(Font::caption).foregroundColor(Color::secondary)}),
                       row(4, {text(texts.developedBy),
                               {Link{"support@example.org", "mailto:support@example.org"}, {}, {}, {}}})
                           .font(Font::caption2)
                           .foregroundColor(Color::secondary)
                           .frame({.maxWidth = Frame::unbounded})})
        .padding(20)
        .frame({.width = 440});
}

// Translations, which differ from the English texts in length.
inline Texts german() {
    return {.title = "BLE-kovra — Trackpad-Steuerung",
            .block = "Trackpad deaktivieren",
            .mode = "Modus:",
            .always = "Immer",
            .onDevice = "Wenn die gewählte Maus verbunden ist",
            .chooseMouse = "Maus auswählen",
            .hint =
                "Im Modus „wenn eine Maus verbunden ist“ wird das Trackpad deaktiviert, solange das gewählte Gerät "
                "verbunden ist. Maus trennen — das Trackpad funktioniert wieder.",
            .noDevices = "Keine Geräte gefunden. Schließen Sie eine Maus an.",
            .disconnected = "getrennt",
            .status = "Trackpad deaktiviert",
            .developedBy = "Entwickelt von: Tamsin Orlek ·"};
}
inline Texts french() {
    return {.title = "BLE-kovra — contrôle du trackpad",
            .block = "Couper le trackpad",
            .mode = "Mode :",
            .always = "Toujours",
            .onDevice = "Quand la souris sélectionnée est connectée",
            .chooseMouse = "Choisissez une souris",
            .hint =
                "En mode « quand une souris est connectée », le trackpad est coupé tant que l’appareil sélectionné "
                "est connecté. Déconnectez la souris — le trackpad refonctionne.",
            .noDevices = "Aucun appareil trouvé. Connectez une souris.",
            .disconnected = "déconnecté",
            .status = "Trackpad coupé",
            .developedBy = "Développé par : Tamsin Orlek ·"};
}
inline Texts russian() {
    return {.title = "BLE-kovra — управление трекпадом",
            .block = "Глушить трекпад",
            .mode = "Режим:",
            .always = "Всегда",
            .onDevice = "Когда подключена выбранная мышь",
            .chooseMouse = "Выберите мышь",
            .hint =
                "В режиме «когда подключена мышь» трекпад глушится, пока выбранное устройство на связи. Отключите "
                "мышь — трекпад снова работает.",
            .noDevices = "Устройства не найдены. Подключите мышь.",
            .disconnected = "отключено",
            .status = "Трекпад заглушён",
            .developedBy = "Разработано: Tamsin Orlek ·"};
}

// Returns mice with the ids "0", "1" and so on.
inline std::vector<Device> mice(int count) {
    std::vector<Device> devices;
    for (int i = 0; i < count; ++i) devices.push_back({std::to_string(i), "Mouse " + std::to_string(i)});
    return devices;
}

}  // namespace kovra::sample
