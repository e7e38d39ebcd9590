#include "fieldline/drivers/power/sensor_ups.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>
#include <system_error>

#include "fieldline/platform/text.h"
#include "fieldline/sensor/truncate.h"

namespace {

constexpr int kReplyAsked = 50;
constexpr char kEnd = '\r';

// Bits of m_nFlags.
constexpr int kIdentificationRead = 1;
constexpr int kRatingsRead = 2;

// A number of a reply, and its position in the record. The tables are in the order of the reply.
struct Number {
  std::size_t position;
  int factor;
};

//  (208.4 140.0 208.4 034 59.9 2.05 35.0 00110000<CR>
constexpr Number kStatusFields[] = {
    {offsetof(UPS_DATA, input_voltage),       10},
    {offsetof(UPS_DATA, input_fault_voltage), 10},
    {offsetof(UPS_DATA, output_voltage),      10},
    {offsetof(UPS_DATA, output_load),         1 },
    {offsetof(UPS_DATA, input_frequency),     10},
    {offsetof(UPS_DATA, battery_voltage),     10},
    {offsetof(UPS_DATA, temperature),         10},
};
constexpr int kStatusBits = 8;

//  #230.0 004 12.00 50.0<CR>
constexpr Number kRatingFields[] = {
    {offsetof(UPS_DATA, rated_voltage),         1},
    {offsetof(UPS_DATA, rated_current),         1},
    {offsetof(UPS_DATA, rated_battery_voltage), 1},
    {offsetof(UPS_DATA, rated_frequency),       1},
};

//  #MAKER_________ MODEL_____ VERSION___<CR>, names padded with spaces
constexpr std::size_t kMaker = 1;
constexpr std::size_t kModel = 17;
constexpr std::size_t kVersion = 28;

// Reads a reply and gives its text up to the final CR. The text is empty when nothing was received. `accepted` is true
// when the reply starts with the mark and ends with CR.
class Reply {
 public:
  Reply(ISerBase* port, char mark) {
    const int received = port->Read(reinterpret_cast<BYTE*>(bytes_), kReplyAsked);
    if (received <= 0) return;
    came_ = true;
    accepted_ = bytes_[0] == mark && bytes_[received - 1] == kEnd;
    text_ = {bytes_, static_cast<std::size_t>(received) - 1};
  }

  bool came() const { return came_; }
  bool accepted() const { return accepted_; }

  // The text from `position` on, up to a stray zero; empty when the text ends before `position`.
  std::string_view From(std::size_t position) const {
    const std::string_view rest = text_.substr(std::min(position, text_.size()));
    return rest.substr(0, rest.find('\0'));
  }
  bool Reaches(std::size_t position) const { return text_.size() >= position; }

 private:
  char bytes_[kReplyAsked];
  std::string_view text_;
  bool came_ = false;
  bool accepted_ = false;
};

// Moves the text before the first space from `rest` to `field`, and drops the space. Returns false, with nothing
// changed, when there is no space.
bool CutField(std::string_view* rest, std::string_view* field) {
  const std::size_t space = rest->find(' ');
  if (space == rest->npos) return false;
  *field = rest->substr(0, space);
  rest->remove_prefix(space + 1);
  return true;
}

// The number at the start of the field, after any blanks; 0 when there is none.
double ToNumber(std::string_view field) {
  field.remove_prefix(std::min(field.find_first_not_of(" \t\n\v\f\r"), field.size()));
  if (field.starts_with('+')) {
    field.remove_prefix(1);
    if (field.starts_with('-')) return 0;
  }
  double number = 0;
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), number);
  if (error == std::errc::result_out_of_range) {
    // In a field this short, only an exponent can take the number out of the range of a double.
    const std::string_view text(field.data(), static_cast<std::size_t>(end - field.data()));
    if (text.find("e-") != text.npos || text.find("E-") != text.npos) return 0;
    constexpr double kMost = std::numeric_limits<double>::max();
    return field.starts_with('-') ? -kMost : kMost;
  }
  return std::isfinite(number) ? number : 0;
}

void StoreNumber(BYTE* record, const Number& target, std::string_view field) {
  const auto value = fieldline::Truncate<std::int32_t>(ToNumber(field) * target.factor);
  std::memcpy(record + target.position, &value, sizeof value);
}

void StoreName(BYTE* record, std::size_t position, std::string_view name) {
  char16_t text[std::size(UPS_DATA{}.maker)] = {};
  fieldline::DeviceTextToUtf16(name.data(), static_cast<int>(name.size()), text, std::size(text));
  std::memcpy(record + position, text, sizeof text);
}

}  // namespace

CSensorUps::CSensorUps() : RecordSensor(SERDAT_UPS) {}

int CSensorUps::GetData(ISerBase* port, int) {
  if (!port->IsOpened()) return 0;
  if (!ReadStatus(port)) return 0;
  if (!(m_nFlags & kIdentificationRead) && !ReadIdentification(port)) return 0;
  if (!(m_nFlags & kRatingsRead) && !ReadRatings(port)) return 0;
  return 1;
}

bool CSensorUps::ReadStatus(ISerBase* port) {
  if (!SendCommand(port, Command("Q1\r"))) return false;
  const Reply reply(port, '(');
  if (!reply.accepted()) return false;

  std::string_view rest = reply.From(1);
  for (const Number& target : kStatusFields) {
    std::string_view field;
    if (!CutField(&rest, &field)) return false;
    StoreNumber(m_pData, target, field);
  }
  if (rest.size() != kStatusBits) return false;

  BYTE* const bits = m_pData + offsetof(UPS_DATA, utility_fail);
  m_data.status = 0;
  for (std::size_t i = 0; i < kStatusBits; ++i) {
    bits[i] = rest[i] != '0';
    m_data.status = static_cast<BYTE>(m_data.status << 1 | bits[i]);
  }
  return true;
}

bool CSensorUps::ReadIdentification(ISerBase* port) {
  if (!SendCommand(port, Command("I\r"))) return false;
  const Reply reply(port, '#');
  if (!reply.came()) return false;
  if (!reply.accepted()) return true;

  std::string_view rest = reply.From(kMaker);
  std::string_view name;
  if (!CutField(&rest, &name)) return false;
  StoreName(m_pData, offsetof(UPS_DATA, maker), name);
  if (kMaker + name.size() >= kModel) return false;  // the maker runs into the model

  rest = reply.From(kModel);
  if (!CutField(&rest, &name)) return false;
  StoreName(m_pData, offsetof(UPS_DATA, model), name);

  if (!reply.Reaches(kVersion)) return false;
  rest = reply.From(kVersion);
  StoreName(m_pData, offsetof(UPS_DATA, version), rest.substr(0, rest.find(' ')));
  m_nFlags |= kIdentificationRead;
  return true;
}

bool CSensorUps::ReadRatings(ISerBase* port) {
  if (!SendCommand(port, Command("F\r"))) return false;
  const Reply reply(port, '#');
  if (!reply.accepted()) return false;

  std::string_view rest = reply.From(1);
  for (const Number& target : kRatingFields) {
    std::string_view field = rest;
    const bool is_last = &target == std::end(kRatingFields) - 1;
    if (!is_last && !CutField(&rest, &field)) return false;
    StoreNumber(m_pData, target, field);
  }
  m_nFlags |= kRatingsRead;
  return true;
}

int CSensorUps::Command(const char* text) {
  const std::size_t length = std::strlen(text);
  std::memcpy(m_byCmd, text, length);
  return static_cast<int>(length);
}
