#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/theme/LxqtTheme.h"
#include "tests/fuzz/Promise.h"

// LXQt's configuration and the style sheet of a theme.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kovra;
    const std::string text(fuzz::textOf(data, size));
    const std::string name = lxqtThemeName(text);
    fuzz::promise(name.find('\n') == std::string::npos && text.find(name) != std::string::npos,
                  "the name of a theme is a part of a line");
    fuzz::promise(lxqtThemeName(text + "\n[General]\ntheme=last\n") == "last", "the last line with a theme counts");
    const std::optional<std::uint32_t> color = lxqtTextColor(text);
    fuzz::promise(!color || *color <= 0xFF'FF'FF, "a color has 24 bits");
    // A comment that is not closed hides the rest of the file.
    const bool isOpen = text.rfind("/*") != std::string::npos;
    if (!isOpen) {
        const std::string more = text + "} Plugin > QToolButton { color: #123456 }";
        fuzz::promise(lxqtTextColor(more) == 0x12'34'56, "the last rule for the buttons counts");
    }
    return 0;
}
