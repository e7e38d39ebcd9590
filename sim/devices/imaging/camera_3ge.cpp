#include "sim/devices/imaging/camera_3ge.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace fieldline::sim {

std::size_t Camera3ge::Receive(std::span<const BYTE> received, bool, std::vector<Reply>& replies) {
  constexpr std::string_view kRequest = "UG3#";
  if (received.size() < kRequest.size() || !std::equal(kRequest.begin(), kRequest.end(), received.begin())) return 0;
  Bytes picture = TakePicture();
  const auto low = static_cast<BYTE>(picture.size() & 0xFF);
  const auto high = static_cast<BYTE>(picture.size() >> 8);
  replies.push_back({
      {'U', 'G', '#'}
  });
  replies.push_back({
      {'U', 'P', low, high, 0}
  });
  replies.push_back({std::move(picture)});
  return kRequest.size();
}

}  // namespace fieldline::sim
