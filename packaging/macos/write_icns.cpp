// Writes the application's picture as the icon file of its bundle. The build runs this program, so that Finder, alerts
// and System Settings show the picture.

#include <array>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/ApplicationIcon.h"
#include "packaging/macos/PaintedPicture.h"
#include "packaging/macos/PngImage.h"

namespace {

// One size of the icon, by its name in the file format. "@2x" sizes have names of their own. The names icp4 and icp5,
// for 16 and 32 pixels, are left out: such an image does not show when the file is in a bundle.
struct Entry {
    std::string_view name;
    unsigned side;
};

constexpr std::array<Entry, 8> entries{{{"ic11", 32},
                                        {"ic12", 64},
                                        {"ic07", 128},
                                        {"ic13", 256},
                                        {"ic08", 256},
                                        {"ic14", 512},
                                        {"ic09", 512},
                                        {"ic10", 1024}}};

// The margin that the system's own icons have on each side: 100 of 1024 pixels.
constexpr double margin = 100.0 / 1024;

void addBlock(std::string& file, std::string_view name, std::string_view content) {
    const auto size = static_cast<std::uint32_t>(content.size() + 8);
    file += name;
    for (const int shift : {24, 16, 8, 0}) file += static_cast<char>(size >> shift & 0xFF);
    file += content;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: write_icns FILE\n";
        return 2;
    }
    std::string sizes;
    for (const Entry& entry : entries)
        addBlock(sizes, entry.name,
                 kovra::pngImage(kovra::paintedPicture(kovra::applicationIcon(), entry.side, margin)));
    std::string icon;
    addBlock(icon, "icns", sizes);

    std::ofstream file(argv[1], std::ios::binary);
    file << icon;
    if (file.flush()) return 0;
    std::cerr << "write_icns: cannot write " << argv[1] << '\n';
    return 1;
}
