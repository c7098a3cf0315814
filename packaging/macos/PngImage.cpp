#include "packaging/macos/PngImage.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

namespace kovra {

namespace {

constexpr std::size_t bytesOfPixel = 4;

void addBigEndian(std::string& text, std::uint32_t number) {
    for (const int shift : {24, 16, 8, 0}) text += static_cast<char>(number >> shift & 0xFF);
}

std::uint32_t crc32(std::string_view bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<std::uint8_t>(byte);
        for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
    }
    return ~crc;
}

std::uint32_t adler32(std::string_view bytes) {
    constexpr std::uint32_t prime = 65521;
    std::uint32_t low = 1, high = 0;
    for (const char byte : bytes) {
        low = (low + static_cast<std::uint8_t>(byte)) % prime;
        high = (high + low) % prime;
    }
    return high << 16 | low;
}

void addChunk(std::string& png, std::string_view type, std::string_view content) {
    addBigEndian(png, static_cast<std::uint32_t>(content.size()));
    const std::size_t begin = png.size();
    png.append(type).append(content);
    addBigEndian(png, crc32(std::string_view(png).substr(begin)));
}

// A writer of one block with the fixed Huffman codes of RFC 1951, section 3.2.6.
class Deflate {
  public:
    Deflate() { addBits(0b011, 3); }  // final block, fixed codes

    void addLiteral(std::uint8_t byte) {
        if (byte < 144)
            addCode(0x30U + byte, 8);
        else
            addCode(0x190U + byte - 144, 9);
    }
    // Repeats the last byte up to `length` times. Returns how many repetitions are left to write.
    std::size_t addRun(std::size_t length) {
        for (; length >= 258; length -= 258) addRepetition(0xC5, 8);
        for (; length >= 10; length -= 10) addRepetition(8, 7);
        return length;
    }
    std::string finish() {
        addCode(0, 7);
        if (count_ > 0) text_ += static_cast<char>(bits_);
        return std::move(text_);
    }

  private:
    // Writes a match that repeats the last byte. `code` is the Huffman code of a match length without extra bits, and
    // `length` is the number of bits of that code.
    void addRepetition(unsigned code, int length) {
        addCode(code, length);
        addCode(0, 5);  // distance 1: the last byte
    }
    void addBits(unsigned bits, int count) {
        for (int i = 0; i < count; ++i) {
            bits_ |= (bits >> i & 1) << count_;
            if (++count_ < 8) continue;
            text_ += static_cast<char>(bits_);
            bits_ = 0;
            count_ = 0;
        }
    }
    void addCode(unsigned code, int length) {
        for (int i = length - 1; i >= 0; --i) addBits(code >> i & 1, 1);
    }

    std::string text_;
    unsigned bits_ = 0;
    int count_ = 0;
};

// Compresses into the zlib format (RFC 1950). Runs of one byte are encoded as matches, all else as literals.
std::string compressed(std::string_view bytes) {
    Deflate deflate;
    std::size_t i = 0;
    while (i < bytes.size()) {
        const char byte = bytes[i];
        deflate.addLiteral(static_cast<std::uint8_t>(byte));
        const std::size_t end = bytes.find_first_not_of(byte, ++i);
        const std::size_t run = (end == std::string_view::npos ? bytes.size() : end) - i;
        i += run - deflate.addRun(run);
    }
    std::string text("\x78\x01", 2);
    text += deflate.finish();
    addBigEndian(text, adler32(bytes));
    return text;
}

// Stores each row as its difference from the row above, so that areas of one color become zeros.
std::string filtered(const PixelSquare& picture) {
    constexpr char up = 2;
    const std::size_t width = picture.side * bytesOfPixel;
    std::string rows;
    rows.reserve((width + 1) * picture.side);
    for (std::size_t i = 0; i < picture.bytes.size(); ++i) {
        if (i % width == 0) rows += up;
        const int above = i < width ? 0 : picture.bytes[i - width];
        rows += static_cast<char>(picture.bytes[i] - above);
    }
    return rows;
}

}  // namespace

std::string pngImage(const PixelSquare& picture) {
    std::string header;
    addBigEndian(header, picture.side);
    addBigEndian(header, picture.side);
    header.append("\x08\x06\x00\x00\x00", 5);  // 8 bits each of red, green, blue and opacity
    std::string png = "\x89PNG\r\n\x1A\n";
    addChunk(png, "IHDR", header);
    addChunk(png, "IDAT", compressed(filtered(picture)));
    addChunk(png, "IEND", {});
    return png;
}

}  // namespace kovra
