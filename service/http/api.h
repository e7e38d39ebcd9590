#pragma once

#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "polling/site/site.h"
#include "service/alarm/alarm_service.h"
#include "service/history/database.h"
#include "service/live_state.h"
#include "service/picture/picture_shelf.h"

namespace fieldline::service {

// The answer to a request.
struct Reply {
  int status = 200;
  std::string type{};
  std::string body{};
};

Reply ErrorReply(int status, std::string_view code, const std::string& message);

// What programs and the page read: the state of everything as JSON and for Prometheus, as docs/api.md says. From any
// thread.
class Api {
 public:
  using Parameters = std::multimap<std::string, std::string>;

  // `site`, `live`, `alarms` and `shelf` must outlive this; `is_alive` tells whether all lines are polled.
  Api(const Site& site, const LiveState& live, AlarmService& alarms, std::string history_path,
      const PictureShelf& shelf, std::function<bool()> is_alive);

  // Nothing when there is no such path.
  std::optional<Reply> Get(const std::string& path, const Parameters& parameters) const;

  // What changes something. `body` is JSON.
  std::optional<Reply> Post(const std::string& path, const std::string& body) const;

  // Follows the changes of the devices, for one listener.
  class Follower {
   public:
    explicit Follower(const Api& api) : api_(api), sent_(api.live_.devices().size()) {}

    // The devices that changed since the last call, at first all, as a server-sent event; an empty list says that we
    // live. Another event follows when alarms have changed.
    std::string Next();

    // Until Next() has something to tell or a listener should hear that we live. False when nothing will come any more.
    bool Wait() const;

   private:
    const Api& api_;
    std::uint64_t version_ = 0;
    bool is_first_ = true;
    std::vector<Condition> sent_;
    std::uint64_t alarms_version_ = 0;
  };

 private:
  Reply Devices() const;
  Reply SiteDescription() const;
  Reply Latest(const Parameters& parameters) const;
  Reply History(const Parameters& parameters) const;
  Reply Events(const Parameters& parameters) const;
  Reply Pictures(const Parameters& parameters) const;
  Reply OnePicture(const Parameters& parameters) const;
  Reply Alarms() const;
  Reply Health() const;

  std::unique_ptr<Database> OpenHistory() const;
  std::size_t RequireDevice(const std::string& name) const;
  std::string RequireCamera(const Parameters& parameters) const;
  nlohmann::ordered_json Head() const;

  const Site& site_;
  const LiveState& live_;
  AlarmService& alarms_;
  const std::string history_path_;
  const PictureShelf& shelf_;
  const std::function<bool()> is_alive_;
};

}  // namespace fieldline::service
