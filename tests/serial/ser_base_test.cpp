#include "fieldline/serial/ser_base.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "fieldline/platform/device_name.h"
#include "fieldline/platform/pseudo_terminal.h"

namespace fieldline {
namespace {

class SerBase : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(far_.Open());
    ASSERT_EQ(MapDevice(L"COM1:", far_.Path()), 1);
  }

  PseudoTerminal far_;
};

TEST_F(SerBase, OpensTheDeviceOfItsTypeByDefault) {
  struct {
    int type;
    int port;  // set before the open, 0 for none
    const wchar_t* device;
    const wchar_t* definition;
  } const cases[] = {
      {SER_NONE, 0, L"ESL1:", L"ESL1:2400,n,8,1"},
      {SER_ESL3, 0, L"ESL3:", L"ESL3:2400,n,8,1"},
      {SER_ESL8, 5, L"ESL5:", L"ESL5:2400,n,8,1"},
      {SER_TEST, 0, L"COM6:", L"COM6:2400,n,8,1"},
      {SER_COM,  0, L"COM1:", L"COM1:2400,n,8,1"},
      {SER_COM,  5, L"COM4:", L"COM4:2400,n,8,1"},
      {11,       0, L"COM0:", L"COM0:2400,n,8,1"},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(MapDevice(c.device, far_.Path()), 1);
    CSerBase port(static_cast<ENUM_SERTYPE>(c.type));
    if (c.port) port.SetPort(c.port);
    EXPECT_EQ(port.Open(nullptr), 1) << c.definition;
    EXPECT_STREQ(port.m_szDef, c.definition);
    EXPECT_EQ(far_.Baud(), 2400u);
    EXPECT_EQ(port.Close(), 1);
    MapDevice(c.device, nullptr);
  }
}

TEST_F(SerBase, BuildsADefinitionFromAnyNumbers) {
  CSerBase port(SER_COM);
  port.SetPort(std::numeric_limits<int>::min());
  port.SetBaud(std::numeric_limits<int>::min());
  EXPECT_EQ(port.Open(nullptr), 0);
  EXPECT_STREQ(port.m_szDef, L"COM-2147483649:-2147483648,n,8,1");
  EXPECT_EQ(port.IsOpened(), 0);
}

TEST_F(SerBase, RefusesADefinitionThatIsNoneAndChangesNothing) {
  CSerBase port(SER_COM);
  ASSERT_EQ(port.Open(L"COM1:19200,n,8,1"), 1);
  EXPECT_EQ(port.Open(L"COM19600,n,8,1"), 0);
  EXPECT_EQ(port.Open((L"COM1:9600,n,8,1" + std::wstring(37, L' ')).c_str()), 0);
  EXPECT_EQ(port.IsOpened(), 1);
  EXPECT_STREQ(port.m_szDef, L"COM1:19200,n,8,1");
  EXPECT_EQ(far_.Baud(), 19200u);
  ASSERT_EQ(port.Open(port.m_szDef), 1) << "the port's own text as the argument";
  EXPECT_STREQ(port.m_szDef, L"COM1:19200,n,8,1");
  // 51 characters still fit.
  EXPECT_EQ(port.Open((std::wstring(L"COM1:9600,n,") + std::wstring(37, L' ') + L"8,").c_str()), 0) << "three fields";
  EXPECT_EQ(std::wstring(port.m_szDef).size(), 51u);
}

TEST_F(SerBase, AFailureBehindTheOpenLeavesTheDeviceOpenAndAnAbsentOneClosed) {
  for (const wchar_t* definition : {L"COM1:9600,n,8", L"COM1:9600,n,8,1,0", L"COM1:0,n,8,1", L"COM1:9600,n,9,1"}) {
    CSerBase port(SER_COM);
    EXPECT_EQ(port.Open(definition), 0) << definition;
    EXPECT_EQ(port.IsOpened(), 1) << definition;
    EXPECT_STREQ(port.m_szDef, definition);
    EXPECT_EQ(port.Close(), 1);
    EXPECT_EQ(port.IsOpened(), 0);
    EXPECT_STREQ(port.m_szDef, L"");
  }
  CSerBase port(SER_COM);
  ASSERT_EQ(port.Open(L"COM1:9600,n,8,1"), 1);
  EXPECT_EQ(port.Open(L"/nowhere/at/all:9600,n,8,1"), 0);
  EXPECT_EQ(port.IsOpened(), 0);
  EXPECT_STREQ(port.m_szDef, L"/nowhere/at/all:9600,n,8,1");
  CSerBase other(SER_ESL1);
  EXPECT_EQ(other.Open(L"COM1:9600,n,8,1"), 1) << "the first device was closed";
  other.Close();
}

TEST_F(SerBase, AClosedPortTransfersNothing) {
  CSerBase port(SER_COM);
  BYTE byte = 0;
  EXPECT_EQ(port.Read(&byte, 1), -1);
  EXPECT_EQ(port.Write(&byte, 1), -1);
  EXPECT_EQ(port.Purge(), 0);
  EXPECT_EQ(port.Close(), 1);
  EXPECT_EQ(port.SetDef(L"COM1:9600,n,8,1"), 0);
  EXPECT_EQ(port.GetData(5, 1), 0);
  EXPECT_STREQ(port.GetSerNote(), L"Serial Base Class for inherite");
}

TEST_F(SerBase, TimeoutsActFromTheNextOpenOn) {
  CSerBase port(SER_COM);
  port.SetTimeout(0, 0);
  ASSERT_EQ(port.Open(L"COM1:9600,n,8,1"), 1);
  port.SetTimeout(std::numeric_limits<int>::max(), std::numeric_limits<int>::max());
  BYTE bytes[4] = {1, 2, 3, 4};
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(port.Read(bytes, 4), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
  ASSERT_EQ(port.Open(L"COM1:9600,n,8,1"), 1);
  ASSERT_EQ(far_.Write(bytes, 4), 4);
  EXPECT_EQ(port.Read(bytes, 4), 4);
  port.Close();
}

// Records its notifications, and may act in each.
class Observer : public ISerObserver {
 public:
  void OnSerRead(const BYTE* data, int count) override { Note('r', data, count); }
  void OnSerWrite(const BYTE* data, int count) override { Note('w', data, count); }

  std::string log;
  std::function<void()> action;

 private:
  void Note(char direction, const BYTE* data, int count) {
    log += direction + std::string(data, data + count) + ' ';
    if (action) action();
  }
};

class SerBaseObservers : public SerBase {
 protected:
  void SetUp() override {
    SerBase::SetUp();
    port_.SetTimeout(0, 0);
    ASSERT_EQ(port_.Open(L"COM1:9600,n,8,1"), 1);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(port_.InsertObserver(&observers_[i]), i);
  }
  void TearDown() override { port_.Close(); }

  void Write(const std::string& text) {
    const int count = static_cast<int>(text.size());
    ASSERT_EQ(port_.Write(reinterpret_cast<const BYTE*>(text.data()), count), count);
  }
  void ExpectLogs(const char* first, const char* second, const char* third) {
    EXPECT_EQ(observers_[0].log, first);
    EXPECT_EQ(observers_[1].log, second);
    EXPECT_EQ(observers_[2].log, third);
  }

  CSerBase port_{SER_COM};
  Observer observers_[3];
  Observer late_;
};

TEST_F(SerBaseObservers, KeepTheOrderOfRegistrationAndHearWhatPassed) {
  Write("ask");
  BYTE bytes[8] = {'r', 'e', 'p', 'l', 'y'};
  EXPECT_EQ(port_.Read(bytes, 8), 0);
  ASSERT_EQ(far_.Write(bytes, 5), 5);
  ASSERT_EQ(port_.Read(bytes, 5), 5);
  ExpectLogs("wask rreply ", "wask rreply ", "wask rreply ");

  EXPECT_EQ(port_.InsertObserver(nullptr), -1);
  EXPECT_EQ(port_.InsertObserver(&observers_[1]), 1);
  EXPECT_EQ(port_.RemoveObserver(&late_), -1);
  EXPECT_EQ(port_.RemoveObserver(&observers_[0]), 0);
  EXPECT_EQ(port_.InsertObserver(&observers_[1]), 0);
  EXPECT_EQ(port_.InsertObserver(&observers_[2]), 1);
}

TEST_F(SerBaseObservers, MayComeAndGoWhileBeingTold) {
  // The first removes itself and the second, and inserts a new one, which only gets the next notification.
  observers_[0].action = [this] {
    EXPECT_EQ(port_.RemoveObserver(&observers_[0]), 0);
    EXPECT_EQ(port_.RemoveObserver(&observers_[1]), 0);
    EXPECT_EQ(port_.InsertObserver(&late_), 1);
  };
  Write("one");
  Write("two");
  ExpectLogs("wone ", "", "wone wtwo ");
  EXPECT_EQ(late_.log, "wtwo ");
}

TEST_F(SerBaseObservers, MayUseThePortWhileBeingTold) {
  // A write within a write removes an observer that the outer write has already notified.
  observers_[1].action = [this] {
    observers_[1].action = nullptr;
    observers_[2].action = [this] { port_.RemoveObserver(&observers_[0]); };
    Write("in");
  };
  Write("out");
  ExpectLogs("wout win ", "wout win ", "win wout ");
}

}  // namespace
}  // namespace fieldline
