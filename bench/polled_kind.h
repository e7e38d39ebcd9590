#pragma once

#include <memory>
#include <string>

#include "fieldline/platform/device_name.h"
#include "fieldline/sensor/make_driver.h"
#include "fieldline/serial/ser_base.h"
#include "sim/line.h"
#include "sim/models.h"

namespace fieldline::bench {

// A kind's simulated device on a line of its own, and its driver with a port that is open.
class PolledKind {
 public:
  PolledKind(const Kind& kind, const sim::LineOptions& options)
      : kind_(kind), line_(options), driver_(MakeDriver(kind.number)) {
    line_.Add(sim::Make(kind, static_cast<BYTE>(kind.address)));
    is_ready_ = line_.Start() && MapDevice(L"COM2:", line_.Path().c_str()) == 1;
  }
  ~PolledKind() {
    port_.Close();
    MapDevice(L"COM2:", nullptr);
  }
  PolledKind(const PolledKind&) = delete;
  PolledKind& operator=(const PolledKind&) = delete;

  // Time-outs are in ms.
  bool Open(int baud, int per_byte, int constant) {
    const std::string definition = "COM2:" + std::to_string(baud) + ",n,8,1";
    port_.SetTimeout(per_byte, constant);
    return is_ready_ && port_.Open(std::wstring(definition.begin(), definition.end()).c_str()) == 1;
  }

  bool Poll() { return driver_->GetData(&port_, kind_.address) == 1; }

  CSerBase& port() { return port_; }

 private:
  const Kind& kind_;
  sim::Line line_;
  CSerBase port_{SER_COM};
  const std::unique_ptr<CSensorBase> driver_;
  bool is_ready_ = false;
};

}  // namespace fieldline::bench
