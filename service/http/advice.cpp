#include "service/http/advice.h"

#include <algorithm>
#include <iterator>

namespace fieldline::service {
namespace {

struct Advice {
  std::string_view code;
  std::string_view text;
};

// The short form of the table in docs/commissioning.md.
// clang-format off
constexpr Advice kAdvice[] = {
    {"no_answer",          "Is it switched on? Check its plug, its address and speed, and whether A and B (RX and TX) are swapped."},
    {"late_reply",         "It answers too late: give its line a longer time-out in the site file."},
    {"partly_answered",    "It does not know all requests of its kind, or a reply was lost: check the kind in the site file."},
    {"other_device",       "Two devices may have one address, or a second master uses the line."},
    {"line_noise",         "Check the line's bias, termination and common ground, and its speed."},
    {"short_reply",        "A loose wire, a time-out too short for the speed, or another program that reads the line."},
    {"checksum",           "Check parity and stop bits, termination, and whether the cable runs beside power; two devices may have one address."},
    {"modbus_exception",   "Another kind or model of device is at this address."},
    {"device_refused",     "Another kind or model of device is at this address."},
    {"reply_length",       "Another kind or model of device is at this address."},
    {"reply_format",       "Another kind or model of device is at this address."},
    {"reply_command",      "Another kind or model of device is at this address."},
    {"reply_start",        "Check the speed; the device may speak another protocol."},
    {"reply_refused",      "Another kind of device is at this address."},
    {"echo",               "The adapter hears itself: switch its echo off."},
    {"picture_size",       "Set the camera to a lower resolution or more compression."},
    {"picture_cut_short",  "The time-out is too short for the speed."},
    {"not_stored",         "The disk is full, or the directory can't be written."},
    {"line_absent",        "Is the adapter plugged in? Check the line's path in the site file."},
    {"line_in_use",        "Another program has the line open: a second fieldline, a terminal program or ModemManager."},
    {"line_not_permitted", "The service's user must be in the group dialout."},
    {"line_not_serial",    "The path in the site file leads to something else."},
    {"line_settings",      "The adapter does not support this speed or format."},
    {"line_failed",        "The system's own messages say more: dmesg."},
    {"line_gone",          "Was the adapter unplugged? Or it does not get enough power."},
    {"not_sent",           "Hardware flow control may be left on: stty -F DEVICE -crtscts."},
    {"interrupted",        ""},
    {"input_device",       "This machine has no such inputs: check the path in the site file."},
    {"trailing_bytes",     "The device sends too much, or there is noise on the line."},
};
// clang-format on

}  // namespace

std::string_view AdviceFor(std::string_view code) {
  const auto* const found = std::ranges::find(kAdvice, code, &Advice::code);
  return found != std::end(kAdvice) ? found->text : std::string_view();
}

}  // namespace fieldline::service
