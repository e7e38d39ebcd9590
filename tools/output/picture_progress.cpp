#include "tools/output/picture_progress.h"

#include <algorithm>
#include <string>

#include "polling/protocol/ug3.h"
#include "polling/protocol/vc0706.h"

namespace fieldline::tool {

// The first camera's picture is received in a single read, so only its size can be shown.
void PictureProgress::OnSerWrite(const BYTE* data, int count) {
  head_.clear();
  received_ = 0;
  if (const auto picture = PictureAskedFor({data, static_cast<std::size_t>(count)})) {
    SetDetail("a picture of " + std::to_string(*picture) + " bytes is coming");
  }
}

void PictureProgress::OnSerRead(const BYTE* data, int count) {
  const auto size = static_cast<std::size_t>(count);
  const std::size_t of_head = std::min(size, kUg3HeadLength - head_.size());
  head_.insert(head_.end(), data, data + of_head);
  const std::optional<std::size_t> announced = AnnouncedPicture(head_);
  received_ += size - of_head;
  if (!announced || received_ == 0) return;
  SetDetail(std::to_string(received_) + " of " + std::to_string(*announced) + " bytes");
}

}  // namespace fieldline::tool
