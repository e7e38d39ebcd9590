#include "sim/values.h"

#include <gmock/gmock.h>

#include <cmath>

namespace fieldline::sim {
namespace {

using testing::AllOf;
using testing::HasSubstr;

void AddSome(Values& values) {
  values.Add({.name = "temperature", .unit = "K", .maximum = 400, .decimals = 1, .number = 300, .drift = 200});
  values.Add({.name = "load", .unit = "%", .maximum = 100, .number = 50, .drift = 5});
  values.Add({.name = "limit", .minimum = -5, .maximum = 5});
  values.Add({.name = "maker", .max_length = 4, .text = "ACME"});
  values.Add({.name = "page", .maximum = 65535, .read_only = true});
}

TEST(Values, RefusesWithTheReason) {
  Values values;
  AddSome(values);
  const auto refusal = [&values](const char* name, const char* text) {
    std::string error;
    EXPECT_FALSE(values.Set(name, text, &error)) << name << "=" << text;
    return error;
  };
  EXPECT_THAT(refusal("humidity", "1"), AllOf(HasSubstr("'humidity'"), HasSubstr("temperature load limit maker")));
  for (const char* text : {"", "warm", "12.5x", "-0.1", "400.1", "nan", "1,5"}) {
    EXPECT_THAT(refusal("temperature", text), AllOf(HasSubstr("temperature"), HasSubstr("0.0 to 400.0 K")));
  }
  EXPECT_THAT(refusal("maker", "ACME5"), HasSubstr("at most 4 bytes"));
  EXPECT_THAT(refusal("page", "1"), HasSubstr("can't be set"));
  EXPECT_EQ(values.Number("temperature"), 300);
  EXPECT_EQ(values.Text("maker"), "ACME");
}

TEST(Values, HoldsWhatTheDeviceCanSend) {
  Values values;
  AddSome(values);
  std::string error;
  ASSERT_TRUE(values.Set("temperature", "273.16", &error)) << error;
  ASSERT_TRUE(values.Set("limit", "-0.4", &error)) << error;
  ASSERT_TRUE(values.Set("maker", "", &error)) << error;
  values.PutNumber("page", 70000);
  EXPECT_EQ(values.Scaled("temperature", 10), 2732);
  std::string all;
  for (const Value& value : values.List()) all += value.name + "=" + ToText(value) + " ";
  EXPECT_EQ(all, "temperature=273.2 load=50 limit=0 maker= page=65535 ");
}

TEST(Values, DriftStaysWithinItsBounds) {
  Values values;
  AddSome(values);
  bool moved = false;
  for (int second = 0; second < 600; ++second) {
    values.Drift(1);
    EXPECT_LE(values.Number("temperature"), 400);
    EXPECT_LE(std::abs(values.Number("load") - 50), 5);
    moved |= std::abs(values.Number("load") - 50) >= 4;
  }
  EXPECT_TRUE(moved);
  EXPECT_EQ(values.Number("limit"), 0);
  values.PutNumber("load", 20);
  values.Drift(0.1);
  EXPECT_EQ(values.Number("load"), 20);
}

}  // namespace
}  // namespace fieldline::sim
