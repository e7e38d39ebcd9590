// One reply of the card terminal: the bytes stored are those counted, and only a good card succeeds.

#include "fieldline/drivers/imaging/sensor_card_k.h"
#include "fuzz/reply_port.h"

using namespace fieldline::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::uint32_t kNoCard = 0xFFFF;
  ReplyPort port(data, size);
  CSensorCardK terminal;
  terminal.m_nCardLen = kNoCard;
  MakeOld(terminal.m_byCard);
  if (terminal.GetData(&port, 1) == 1) Require(terminal.m_nCardLen == 14 && terminal.m_byCard[13] == 0);
  if (terminal.m_nCardLen == kNoCard) {
    Require(IsOld(terminal.m_byCard));
  } else {
    Require(terminal.m_nCardLen <= sizeof terminal.m_byCard);
    Require(IsOld(std::span(terminal.m_byCard).subspan(terminal.m_nCardLen)));
  }
  return 0;
}
