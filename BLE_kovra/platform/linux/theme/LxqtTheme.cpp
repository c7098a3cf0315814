#include "BLE_kovra/platform/linux/theme/LxqtTheme.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <system_error>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/desktop/SmallTextFile.h"
#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"

namespace kovra {

namespace {

constexpr const char* configurationFolder = "/lxqt";
constexpr const char* configurationFile = "/lxqt.conf";

// The selector of the panel's buttons in a style sheet, without spaces.
constexpr std::string_view buttons = "Plugin>QToolButton";

constexpr std::string_view blanks = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    const auto begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

std::string withoutBlanks(std::string_view text) {
    std::string result(text);
    std::erase_if(result, [](char c) { return blanks.find(c) != std::string_view::npos; });
    return result;
}

std::string withoutComments(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const auto begin = text.find("/*");
        result += text.substr(0, begin);
        const auto end = begin == std::string_view::npos ? begin : text.find("*/", begin + 2);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 2);
    }
    return result;
}

// Calls the function for each part of the text between separators.
template <typename Function>
void forEachPart(std::string_view text, char separator, Function function) {
    while (!text.empty()) {
        const auto end = text.find(separator);
        function(trimmed(text.substr(0, end)));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

// Reads a color such as #dedede, #fff, white or rgba(0, 0, 0, 100%).
std::optional<std::uint32_t> colorNamed(std::string_view value) {
    if (value == "black") return 0x00'00'00;
    if (value == "white") return 0xFF'FF'FF;
    std::uint32_t color = 0;
    if (value.starts_with('#') && (value.size() == 7 || value.size() == 4)) {
        const auto [end, error] = std::from_chars(value.data() + 1, value.data() + value.size(), color, 16);
        if (error != std::errc() || end != value.data() + value.size()) return std::nullopt;
        if (value.size() == 7) return color;
        return (color & 0xF00U) * 0x1100U + (color & 0x0F0U) * 0x110U + (color & 0x00FU) * 0x11U;
    }
    if (!value.starts_with("rgb(") && !value.starts_with("rgba(")) return std::nullopt;
    value.remove_prefix(value.find('(') + 1);
    int parts = 0;
    bool isValid = true;
    forEachPart(value.substr(0, value.find(')')), ',', [&](std::string_view part) {
        std::uint32_t number = 256;
        if (++parts > 3) return;
        const char* end = part.data() + part.size();
        const auto [rest, error] = std::from_chars(part.data(), end, number);
        isValid = isValid && number < 256 && rest == end;  // a percentage is not supported
        color = color << 8U | (number & 0xFFU);
    });
    return isValid && parts >= 3 ? std::optional(color) : std::nullopt;
}

// Returns an empty text if the file cannot be read.
std::string contentsOf(const std::string& path) {
    std::string text;
    return SmallTextFile(path).read(text) == 0 ? text : std::string();
}

std::string themeName() {
    std::vector<std::string> folders = systemConfigFolders();
    folders.insert(folders.begin(), userConfigFolder());
    for (const std::string& folder : folders) {
        std::string name = lxqtThemeName(contentsOf(folder + configurationFolder + configurationFile));
        if (!name.empty()) return name;
    }
    return {};
}

std::optional<PanelTone> currentTone() {
    const std::string name = themeName();
    if (name.empty() || name.find('/') != std::string::npos) return std::nullopt;
    for (const std::string& folder : dataFolders()) {
        const std::string styleSheet = contentsOf(folder + "/lxqt/themes/" + name + "/lxqt-panel.qss");
        if (styleSheet.empty()) continue;
        const auto color = lxqtTextColor(styleSheet);
        return color ? std::optional(toneBehind(*color)) : std::nullopt;
    }
    return std::nullopt;
}

}  // namespace

LxqtTheme::LxqtTheme(SdEventLoop& loop, std::function<void()> changed)
    : changed_(std::move(changed)), inotify_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (inotify_.isOpen()) watchConfiguration(loop);
    tone_ = currentTone();
}

// Without a descriptor or a folder to watch, the theme is read only once.
void LxqtTheme::watchConfiguration(SdEventLoop& loop) {
    const std::string folder = userConfigFolder() + configurationFolder;
    if (::inotify_add_watch(inotify_.number(), folder.c_str(), IN_CLOSE_WRITE | IN_MOVED_TO | IN_ONLYDIR) < 0) return;
    try {
        watch_ = loop.watch(inotify_.number(), [this] {
            drain();
            watch_->rearm();
            const auto tone = currentTone();
            if (std::exchange(tone_, tone) != tone) changed_();
        });
    } catch (const std::system_error&) {
        // no descriptors are left
    }
}

// The content of the events is not needed: few files are in the folder, and they rarely change.
void LxqtTheme::drain() {
    std::array<char, 4096> events;  // NOLINT(cppcoreguidelines-pro-type-member-init): read() fills it
    while (::read(inotify_.number(), events.data(), events.size()) > 0) {
    }
}

std::string lxqtThemeName(std::string_view configuration) {
    std::string_view name;
    bool isInGroup = false;
    forEachPart(configuration, '\n', [&](std::string_view line) {
        if (line.starts_with('[')) isInGroup = line == "[General]";
        const auto equals = line.find('=');
        if (isInGroup && equals != std::string_view::npos && trimmed(line.substr(0, equals)) == "theme")
            name = trimmed(line.substr(equals + 1));
    });
    return std::string(name);
}

std::optional<std::uint32_t> lxqtTextColor(std::string_view styleSheet) {
    std::optional<std::uint32_t> color;
    forEachPart(withoutComments(styleSheet), '}', [&](std::string_view rule) {
        const auto brace = rule.find('{');
        if (brace == std::string_view::npos) return;
        bool concernsButtons = false;
        forEachPart(rule.substr(0, brace), ',',
                    [&](std::string_view selector) { concernsButtons |= withoutBlanks(selector) == buttons; });
        if (!concernsButtons) return;
        forEachPart(rule.substr(brace + 1), ';', [&](std::string_view declaration) {
            const auto colon = declaration.find(':');
            if (colon != std::string_view::npos && trimmed(declaration.substr(0, colon)) == "color")
                color = colorNamed(trimmed(declaration.substr(colon + 1)));
        });
    });
    return color;
}

}  // namespace kovra
