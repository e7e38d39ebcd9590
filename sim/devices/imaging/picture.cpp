#include "sim/devices/imaging/picture.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string>
#include <vector>

// clang-format off
#include <cstdio>  // jpeglib.h uses it without including it
#include <jpeglib.h>
// clang-format on

namespace fieldline::sim {
namespace {

// The dots of a character, three wide and five high; each row is an octal digit.
unsigned Glyph(char c) {
  static constexpr unsigned kDigits[] = {075557, 026227, 071747, 071717, 055711,
                                         074717, 074757, 071111, 075757, 075717};
  if (c >= '0' && c <= '9') return kDigits[c - '0'];
  if (c == ':') return 002020;
  return 000700;  // '-'
}
constexpr int kGlyphWidth = 3;
constexpr int kGlyphHeight = 5;

// Each dot is one block of the JPEG compression, so that a picture takes few bytes and its dots stay sharp.
constexpr int kDotSize = 8;
constexpr std::size_t kColumns = 10 * (kGlyphWidth + 1) + 1;  // "2024-05-17"
constexpr std::size_t kRows = 2 * (kGlyphHeight + 1) + 1;
constexpr std::size_t kWidth = kColumns * kDotSize;
constexpr std::size_t kHeight = kRows * kDotSize;
constexpr BYTE kInk = 0xFF;
constexpr BYTE kPaper = 0x20;

using Pixels = std::vector<BYTE>;  // one byte per pixel, row by row

void FillDot(Pixels& pixels, std::size_t column, std::size_t row) {
  for (std::size_t y = row * kDotSize; y < (row + 1) * kDotSize; ++y) {
    std::fill_n(pixels.begin() + static_cast<std::ptrdiff_t>(y * kWidth + column * kDotSize), kDotSize, kInk);
  }
}

void DrawText(Pixels& pixels, std::size_t row, const std::string& text) {
  std::size_t column = 1;
  for (const char c : text) {
    for (int dot = 0; dot < kGlyphWidth * kGlyphHeight; ++dot) {
      const auto x = static_cast<std::size_t>(dot % kGlyphWidth);
      const auto y = static_cast<std::size_t>(dot / kGlyphWidth);
      if (Glyph(c) >> (kGlyphWidth * kGlyphHeight - 1 - dot) & 1) FillDot(pixels, column + x, row + y);
    }
    column += kGlyphWidth + 1;
  }
}

std::string TwoDigits(int number) {
  return {static_cast<char>('0' + number / 10 % 10), static_cast<char>('0' + number % 10)};
}

Bytes Compress(Pixels& pixels) {
  jpeg_compress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* buffer = nullptr;
  unsigned long length = 0;
  jpeg_mem_dest(&jpeg, &buffer, &length);
  jpeg.image_width = kWidth;
  jpeg.image_height = kHeight;
  jpeg.input_components = 1;
  jpeg.in_color_space = JCS_GRAYSCALE;
  jpeg_set_defaults(&jpeg);
  jpeg.optimize_coding = TRUE;
  jpeg_start_compress(&jpeg, TRUE);
  for (std::size_t y = 0; y < kHeight; ++y) {
    JSAMPROW row = &pixels[y * kWidth];
    jpeg_write_scanlines(&jpeg, &row, 1);
  }
  jpeg_finish_compress(&jpeg);
  Bytes bytes(buffer, buffer + length);
  std::free(buffer);
  jpeg_destroy_compress(&jpeg);
  return bytes;
}

// Extends a picture to `size` bytes with a comment before its end mark. Drawn pictures are small enough for that.
void Pad(Bytes& picture, std::size_t size) {
  constexpr std::size_t kMarkLength = 2;
  const std::size_t missing = size - picture.size();
  const std::size_t length = missing - kMarkLength;  // includes its own two bytes
  Bytes comment{0xFF, 0xFE, static_cast<BYTE>(length >> 8), static_cast<BYTE>(length & 0xFF)};
  // Neighbouring pieces differ, so that a lost or repeated piece is noticed.
  while (comment.size() < missing) comment.push_back(static_cast<BYTE>(comment.size() % 251));
  picture.insert(picture.end() - kMarkLength, comment.begin(), comment.end());
}

}  // namespace

Bytes DrawPicture(const CalendarTime& time, std::size_t size) {
  Pixels pixels(kWidth * kHeight, kPaper);
  DrawText(pixels, 1,
           TwoDigits(time.year / 100) + TwoDigits(time.year) + '-' + TwoDigits(time.month) + '-' + TwoDigits(time.day));
  DrawText(pixels, 2 + kGlyphHeight,
           TwoDigits(time.hour) + ':' + TwoDigits(time.minute) + ':' + TwoDigits(time.second));
  Bytes picture = Compress(pixels);
  Pad(picture, size);
  return picture;
}

}  // namespace fieldline::sim
