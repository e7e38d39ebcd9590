#include "fieldline/serial/ser_base.h"

#include <algorithm>
#include <charconv>
#include <new>
#include <string_view>

#include "fieldline/serial/port_definition.h"

namespace {

constexpr wchar_t kNote[] = L"Serial Base Class for inherite";
constexpr int kWriteTimeoutPerByte = 50;  // ms
constexpr int kWriteTimeoutConst = 200;   // ms

int DefaultPort(ENUM_SERTYPE type) {
  if (type >= SER_ESL1 && type <= SER_ESL8) return type;
  if (type == SER_TEST) return 7;
  if (type == SER_COM) return 2;
  return 1;
}

wchar_t* AppendText(wchar_t* out, std::wstring_view text) { return std::copy(text.begin(), text.end(), out); }

wchar_t* AppendNumber(wchar_t* out, long long number) {
  char digits[20];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  return std::copy(digits, end, out);
}

// The numbers have at most 11 characters each, so the text always fits.
void BuildDefinition(ENUM_SERTYPE type, int port, int baud, wchar_t* out) {
  const bool esl = type <= SER_ESL8;
  out = AppendText(out, esl ? L"ESL" : L"COM");
  out = AppendNumber(out, esl ? port : port - 1LL);
  out = AppendText(out, L":");
  out = AppendNumber(out, baud);
  out = AppendText(out, L",n,8,1");
  *out = L'\0';
}

}  // namespace

// One notification of all observers. Notifications nest when an observer uses the port. The port knows all that are
// running, so that a removed observer can shift their positions.
class CSerBase::Notification {
 public:
  explicit Notification(CSerBase* port)
      : port_(port), outer_(port->m_pNotification), end_(port->m_arrObserver.size()) {}
  Notification(const Notification&) = delete;
  Notification& operator=(const Notification&) = delete;
  ~Notification() { port_->m_pNotification = outer_; }

  ISerObserver* Next() {
    port_->m_pNotification = this;
    return next_ < end_ ? port_->m_arrObserver[next_++] : nullptr;
  }

  void Removed(std::size_t index) {
    if (index < next_) --next_;
    if (index < end_) --end_;
    if (outer_) outer_->Removed(index);
  }

 private:
  CSerBase* port_;
  Notification* outer_;
  std::size_t next_ = 0;
  std::size_t end_;
};

CSerBase::CSerBase(ENUM_SERTYPE type) : m_eType(type), m_nPort(DefaultPort(type)) {
  static_assert(sizeof kNote <= sizeof m_strNote);
  std::copy(std::begin(kNote), std::end(kNote), m_strNote);
}

ENUM_SERTYPE CSerBase::GetSerType() { return m_eType; }

wchar_t* CSerBase::GetSerNote() { return m_strNote; }

int CSerBase::Open(const wchar_t* def) {
  wchar_t definition[kDefCapacity] = {};
  if (def) {
    const std::wstring_view text(def);
    if (text.size() >= kDefCapacity) return 0;
    *AppendText(definition, text) = L'\0';
  } else {
    BuildDefinition(m_eType, m_nPort, m_nBaud, definition);
  }
  const int name_length = fieldline::DeviceNameLength(definition);
  if (name_length == 0) return 0;

  Close();
  std::copy(std::begin(definition), std::end(definition), m_szDef);
  wchar_t name[kDefCapacity];
  *AppendText(name, {definition, static_cast<std::size_t>(name_length)}) = L'\0';
  if (m_hCom.Open(name) != fieldline::SerialDevice::OpenResult::kOpened) return 0;

  if (!m_hCom.SetTimeouts({m_nReadTimeoutPerByte, m_nReadTimeoutConst, kWriteTimeoutPerByte, kWriteTimeoutConst})) {
    return 0;
  }
  if (!m_hCom.Purge()) return 0;
  fieldline::LineSettings settings;
  if (!fieldline::ParseLineSettings(definition, &settings)) return 0;
  return m_hCom.SetLine(settings) ? 1 : 0;
}

int CSerBase::Close() {
  if (m_hCom.IsOpen()) {
    m_hCom.Close();
    m_szDef[0] = L'\0';
  }
  return 1;
}

int CSerBase::IsOpened() { return m_hCom.IsOpen() ? 1 : 0; }

int CSerBase::SetDef(const wchar_t*) { return 0; }

int CSerBase::SetPort(int port) {
  m_nPort = port;
  return 1;
}

int CSerBase::SetBaud(int baud) {
  m_nBaud = baud;
  return 1;
}

int CSerBase::SetTimeout(int per_byte, int constant) {
  m_nReadTimeoutPerByte = per_byte;
  m_nReadTimeoutConst = constant;
  return 1;
}

int CSerBase::Purge() { return m_hCom.Purge() ? 1 : 0; }

int CSerBase::Read(BYTE* data, int count) {
  if (!m_hCom.IsOpen()) return -1;
  const int received = m_hCom.Read(data, count);
  if (received > 0) NotifyObservers(&ISerObserver::OnSerRead, data, received);
  return received;
}

int CSerBase::Write(const BYTE* data, int count) {
  if (!m_hCom.IsOpen()) return -1;
  const int written = m_hCom.Write(data, count);
  if (written > 0) NotifyObservers(&ISerObserver::OnSerWrite, data, written);
  return written;
}

int CSerBase::InsertObserver(ISerObserver* observer) {
  if (!observer) return -1;
  const auto known = std::find(m_arrObserver.begin(), m_arrObserver.end(), observer);
  if (known != m_arrObserver.end()) return static_cast<int>(known - m_arrObserver.begin());
  try {
    m_arrObserver.push_back(observer);
  } catch (const std::bad_alloc&) {
    return -1;
  }
  return static_cast<int>(m_arrObserver.size()) - 1;
}

int CSerBase::RemoveObserver(ISerObserver* observer) {
  const auto known = std::find(m_arrObserver.begin(), m_arrObserver.end(), observer);
  if (known == m_arrObserver.end()) return -1;
  const auto index = known - m_arrObserver.begin();
  m_arrObserver.erase(known);
  if (m_pNotification) m_pNotification->Removed(static_cast<std::size_t>(index));
  return static_cast<int>(index);
}

int CSerBase::GetData(int, int) { return 0; }

void CSerBase::NotifyObservers(void (ISerObserver::*event)(const BYTE*, int), const BYTE* data, int count) {
  Notification notification(this);
  while (ISerObserver* observer = notification.Next()) (observer->*event)(data, count);
}
