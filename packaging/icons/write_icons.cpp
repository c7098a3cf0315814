// Writes the pictures of the status item and of the application as icon files into a folder. The build runs this
// program, so that the icon files show the same pictures that the program draws itself.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "BLE_kovra/app/StatusIcon.h"
#include "BLE_kovra/platform/ApplicationIcon.h"
#include "packaging/icons/IconSvg.h"

namespace {

bool write(const std::filesystem::path& path, const std::string& svg) {
    std::ofstream file(path);
    file << svg;
    if (file.flush()) return true;
    std::cerr << "write_icons: cannot write " << path << '\n';
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: write_icons FOLDER\n";
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    for (const bool active : {false, true}) {
        const kovra::Drawing icon = kovra::makeIcon(active);
        if (!write(folder / (icon.name + ".svg"), kovra::iconSvg(icon))) return 1;
    }
    return write(folder / "ble-kovra.svg", kovra::iconSvg(kovra::applicationIcon())) ? 0 : 1;
}
