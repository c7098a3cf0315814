// Writes the pictures of the status item and of the application as icon files into a folder. The build runs this
// program, so that the icon files show the same pictures that the program draws itself.
//
// The folder gets an icon theme: hicolor/SIZE/apps. Icons of any size are also directly in the folder, because some
// panels look there for the icons of a program that is not installed.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <utility>

#include "BLE_kovra/app/StatusIcon.h"
#include "BLE_kovra/platform/ApplicationIcon.h"
#include "packaging/icons/IconSvg.h"

namespace {

// A folder of the theme, and the number of pixels for which its icons are drawn. The panels scale the icons in
// `symbolic` and `scalable` to any other size.
struct ThemeFolder {
    std::string_view name;
    int pixels;
};
constexpr ThemeFolder anySizeSymbolic{"symbolic", 24};
constexpr ThemeFolder anySize{"scalable", 24};
constexpr ThemeFolder fixedSizes[] = {{"16x16", 16}, {"22x22", 22}, {"24x24", 24}};

class Writer {
  public:
    explicit Writer(std::filesystem::path folder) : folder_(std::move(folder)) {}

    bool writeStatusIcon(const kovra::Drawing& icon, kovra::IconLook look) const {
        const std::string name = kovra::iconName(icon.name, look);
        const ThemeFolder any = name.ends_with("-symbolic") ? anySizeSymbolic : anySize;
        const auto svg = [&](int pixels) { return kovra::iconSvg(kovra::fittedTo(pixels, icon), look); };
        if (!writeOfAnySize(any.name, name, svg(any.pixels))) return false;
        for (const ThemeFolder& each : fixedSizes) {
            if (!write(inTheme(each.name), name, svg(each.pixels))) return false;
        }
        return true;
    }
    bool writeApplicationIcon() const {
        return writeOfAnySize(anySize.name, "ble-kovra", kovra::iconSvg(kovra::applicationIcon()));
    }

  private:
    std::filesystem::path inTheme(std::string_view folder) const { return folder_ / "hicolor" / folder / "apps"; }
    bool writeOfAnySize(std::string_view folder, const std::string& name, const std::string& svg) const {
        return write(folder_, name, svg) && write(inTheme(folder), name, svg);
    }
    static bool write(const std::filesystem::path& folder, const std::string& name, const std::string& svg) {
        std::filesystem::create_directories(folder);
        const std::filesystem::path path = folder / (name + ".svg");
        std::ofstream file(path);
        file << svg;
        if (file.flush()) return true;
        std::cerr << "write_icons: cannot write " << path << '\n';
        return false;
    }

    std::filesystem::path folder_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: write_icons FOLDER\n";
        return 2;
    }
    const Writer writer(argv[1]);
    for (const bool active : {false, true}) {
        for (const kovra::IconLook look : kovra::iconLooks) {
            if (!writer.writeStatusIcon(kovra::makeIcon(active), look)) return 1;
        }
    }
    return writer.writeApplicationIcon() ? 0 : 1;
}
