#include "sim/devices/imaging/camera.h"

#include <memory>
#include <tuple>

// clang-format off
#include <cstdio>  // jpeglib.h uses it without including it
#include <jpeglib.h>
// clang-format on

#include "fieldline/drivers/imaging/sensor_camera.h"
#include "fieldline/platform/device_name.h"
#include "fieldline/sensor/make_driver.h"
#include "fieldline/serial/ser_base.h"
#include "sim/devices/imaging/camera_3ge.h"
#include "sim/devices/imaging/picture.h"
#include "sim/line.h"
#include "tests/support/flash_images.h"
#include "tests/support/make_device.h"
#include "tests/support/scripted_port.h"

namespace fieldline::sim {
namespace {

using test::Hex;
using test::ToHex;

struct Pixels {
  unsigned width;
  std::vector<BYTE> bytes;

  BYTE At(unsigned x, unsigned y) const { return bytes[y * width + x]; }
};

// A JPEG in shades of grey; damage fails the test.
Pixels Decode(const std::string& picture) {
  jpeg_decompress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&jpeg);
  jpeg_mem_src(&jpeg, reinterpret_cast<const unsigned char*>(picture.data()), picture.size());
  jpeg_read_header(&jpeg, TRUE);
  jpeg_start_decompress(&jpeg);
  EXPECT_EQ(jpeg.output_components, 1);
  Pixels pixels{jpeg.output_width, std::vector<BYTE>(jpeg.output_width * jpeg.output_height)};
  while (jpeg.output_scanline < jpeg.output_height) {
    JSAMPROW row = &pixels.bytes[jpeg.output_scanline * pixels.width];
    jpeg_read_scanlines(&jpeg, &row, 1);
  }
  jpeg_finish_decompress(&jpeg);
  EXPECT_EQ(errors.num_warnings, 0);
  jpeg_destroy_decompress(&jpeg);
  return pixels;
}

// What the device answers to a request, all replies in one.
std::string Ask(Device& device, const Bytes& request) {
  std::vector<Reply> replies;
  const std::size_t taken = device.Receive(request, false, replies);
  EXPECT_EQ(taken, replies.empty() ? 0 : request.size());
  Bytes answer;
  for (const Reply& reply : replies) answer.insert(answer.end(), reply.bytes.begin(), reply.bytes.end());
  return ToHex(answer);
}

TEST(Picture, ShowsTheTimeInAnySize) {
  const CalendarTime time{2024, 5, 17, 13, 45, 0};
  const auto text = [](const Bytes& bytes) { return std::string(bytes.begin(), bytes.end()); };
  for (const std::size_t size : {kSmallestPicture, std::size_t{4097}, kLargestPicture}) {
    const std::string picture = text(DrawPicture(time, size));
    EXPECT_EQ(picture.size(), size);
    const Pixels pixels = Decode(picture);
    EXPECT_LT(pixels.At(4, 4), 64) << size << ": the margin";
    EXPECT_GT(pixels.At(12, 12), 192) << size << ": the year's first digit";
    EXPECT_LT(pixels.At(12, 20), 64) << size << ": left in its second row";
    EXPECT_GT(pixels.At(28, 20), 192) << size << ": right in its second row";
  }
  for (int second = 0; second < 60; ++second) {
    EXPECT_EQ(DrawPicture({2068, 8, 28, 20, 58, second}, kSmallestPicture).size(), kSmallestPicture) << second;
  }
}

TEST(Camera, AnswersEachCommand) {
  Camera camera;
  EXPECT_TRUE(camera.Show(Hex("FF D8 11 22 FF D9")));
  EXPECT_FALSE(camera.Show(Hex("FF D8 FF")));
  EXPECT_FALSE(camera.Show(Hex("89 50 4E 47 0D 0A")));
  const std::pair<const char*, const char*> dialogue[] = {
      {"56 00 34 01 00",                                  "76 00 34 04 00"                        }, // nothing frozen
      {"56 00 31 05 01 01 12 04 80",                      "76 00 31 00 00"                        },
      {"56 00 36 01 00",                                  "76 00 36 00 00"                        },
      {"56 00 34 01 00",                                  "76 00 34 00 04 00 00 00 06"            },
      {"56 00 32 0C 00 0A 00 00 00 02 00 00 00 03 00 0A", "76 00 32 00 00 11 22 FF 76 00 32 00 00"},
      {"56 00 32 0C 00 0A 00 00 00 02 00 00 00 05 00 0A", "76 00 32 03 00"                        },
      {"56 00 32 00",                                     "76 00 32 02 00"                        },
      {"56 00 99 01 00",                                  "76 00 99 01 00"                        },
      {"56 01 26 00",                                     ""                                      }, // another camera
      {"56 00 36 01",                                     ""                                      }, // not complete
  };
  for (const auto& [command, reply] : dialogue) EXPECT_EQ(Ask(camera, Hex(command)), reply) << command;
  EXPECT_EQ(camera.values().Number("compression"), 0x80);
}

TEST(Camera3ge, AnswersItsRequest) {
  Camera3ge camera;
  EXPECT_TRUE(camera.Show(Hex("FF D8 11 22 FF D9")));
  EXPECT_EQ(Ask(camera, Hex("55 47 33 23")), "55 47 23 55 50 06 00 00 FF D8 11 22 FF D9");
  EXPECT_EQ(Ask(camera, Hex("55 47 33")), "");
}

class CameraLine : public testing::TestWithParam<std::tuple<int, std::string>> {};

// Through driver, port and line, with a line faster than any real one.
TEST_P(CameraLine, CarriesThePictureUnchanged) {
  const auto& [size, kind] = GetParam();
  const test::FlashImages flash;
  Line line({.baud = 115200, .paced = false});
  line.Add(test::MakeDevice(kind, 0)).values().PutNumber("size", size);
  std::string sent;  // the last reply
  line.SetListener([&](Traffic traffic, std::span<const BYTE> bytes) {
    if (traffic == Traffic::kReply) sent.assign(bytes.begin(), bytes.end());
  });
  ASSERT_TRUE(line.Start());

  ASSERT_EQ(MapDevice(L"COM1:", line.Path().c_str()), 1);
  CSerBase port(SER_COM);
  port.SetTimeout(1, 300);
  ASSERT_EQ(port.Open(L"COM1:115200,n,8,1"), 1);
  const std::unique_ptr<CSensorBase> driver(MakeDriver(FindKind(kind)->number));
  EXPECT_EQ(driver->GetData(&port, 0), 1);
  port.Close();
  line.Stop();
  MapDevice(L"COM1:", nullptr);

  const auto& record = *reinterpret_cast<const CAMERA_DATA*>(driver->m_pData);
  EXPECT_EQ(record.length, size);
  const std::string stored = flash.Read(record.name);
  EXPECT_EQ(stored, kind == "camera" ? sent.substr(5, sent.size() - 10) : sent);
  EXPECT_EQ(Decode(stored).width, 328u);
}

INSTANTIATE_TEST_SUITE_P(Sizes, CameraLine,
                         testing::Combine(testing::Values(1024, 12345, 65535),
                                          testing::Values("camera", "camera-3ge")));

}  // namespace
}  // namespace fieldline::sim
