#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace fieldline::service {

// The messages that the broker is to keep, and which of them it has to be sent. Remembers its topics in the history's
// database, so that those of devices that have left the site are removed later. One thread uses it at a time.
class RetainedTopics {
 public:
  explicit RetainedTopics(std::string path) : path_(std::move(path)) {}

  // To be sent, if it is another message than before or `again`. An empty one removes the topic.
  void Put(const std::string& topic, const std::string& message, bool again = false);

  // The broker may have forgotten everything.
  void SendAllAgain();

  // Calls `send` for each message to be sent until it returns false.
  void Send(const std::function<bool(const std::string& topic, const std::string& message)>& send);

  // Reads which topics an earlier program left, to remove those that are not used by now, and stores those that are.
  // Throws DatabaseError.
  void Store();

  // Another file is at the path by now.
  void Forget() { is_stored_ = false; }

 private:
  const std::string path_;
  std::map<std::string, std::string> messages_;
  std::set<std::string> waiting_;  // to be sent
  std::set<std::string> removed_;  // from the broker, and still in the database
  bool is_stored_ = false;         // as it is here
  bool knows_earlier_ = false;
};

}  // namespace fieldline::service
