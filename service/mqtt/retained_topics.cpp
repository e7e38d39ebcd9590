#include "service/mqtt/retained_topics.h"

#include "service/history/schema.h"

namespace fieldline::service {

void RetainedTopics::Put(const std::string& topic, const std::string& message, bool again) {
  const auto [found, is_new] = messages_.try_emplace(topic, message);
  if (is_new) is_stored_ = false;
  if (!is_new && found->second == message && !again) return;
  found->second = message;
  waiting_.insert(topic);
}

void RetainedTopics::SendAllAgain() {
  for (const auto& [topic, message] : messages_) waiting_.insert(topic);
}

void RetainedTopics::Send(const std::function<bool(const std::string&, const std::string&)>& send) {
  while (!waiting_.empty()) {
    const auto first = waiting_.begin();
    const std::string& message = messages_[*first];
    if (!send(*first, message)) return;
    if (message.empty()) {
      messages_.erase(*first);
      removed_.insert(*first);
      is_stored_ = false;
    }
    waiting_.erase(first);
  }
}

void RetainedTopics::Store() {
  if (is_stored_) return;
  Database database(path_, Database::Mode::kWrite);
  Transaction transaction(database);
  PrepareTables(database);
  if (!knows_earlier_) {
    Statement earlier(database, "SELECT topic FROM mqtt_retained");
    while (earlier.Step()) {
      const std::string topic = earlier.Text(0);
      if (!messages_.contains(topic)) Put(topic, "");
    }
    knows_earlier_ = true;
  }
  Statement add(database, "INSERT OR IGNORE INTO mqtt_retained VALUES (?)");
  for (const auto& [topic, message] : messages_) add.Bind(topic).Run();
  Statement remove(database, "DELETE FROM mqtt_retained WHERE topic = ?");
  for (const std::string& topic : removed_) remove.Bind(topic).Run();
  transaction.Commit();
  removed_.clear();
  is_stored_ = true;
}

}  // namespace fieldline::service
