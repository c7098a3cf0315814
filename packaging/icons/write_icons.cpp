// Writes the status item's pictures as symbolic icons into a folder: the build's way from the program's own drawing to
// the files that panels load.

#include <filesystem>
#include <fstream>
#include <iostream>

#include "BLE_kovra/app/StatusIcon.h"
#include "BLE_kovra/platform/linux/IconSvg.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: write_icons FOLDER\n";
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    for (const bool active : {false, true}) {
        const kovra::Drawing icon = kovra::makeIcon(active);
        const std::filesystem::path path = folder / (icon.name + ".svg");
        std::ofstream file(path);
        file << kovra::iconSvg(icon);
        if (!file.flush()) {
            std::cerr << "write_icons: cannot write " << path << '\n';
            return 1;
        }
    }
    return 0;
}
