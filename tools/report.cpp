#include "tools/report.h"

#include <cmath>
#include <iostream>

#include "tools/text.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

ordered_json AddressToJson(const Kind& kind, int address) {
  return kind.HasAddress() ? ordered_json(address) : ordered_json();
}

ordered_json BytesToJson(const Bytes& bytes) { return bytes.empty() ? ordered_json() : ordered_json(Hex(bytes)); }

}  // namespace

void PrintJson(const ordered_json& json) {
  std::cout << json.dump(-1, ' ', false, ordered_json::error_handler_t::replace) << std::endl;
}

ordered_json PollHead(const Kind& kind, int address, const std::string& port, const PollResult& result) {
  return {
      {"schema",  kJsonSchema         },
      {"time",    IsoTime(result.time)},
      {"kind",    kind.name           },
      {"address", AddressToJson(kind,   address)},
      {"port",         port.empty() ? ordered_json() : ordered_json(port)                       },
      {"ok",         !result.failure  }
  };
}

ordered_json PollHead(const Kind& kind, int address, std::string_view line, std::string_view device,
                      const PollResult& result) {
  return {
      {"schema",  kJsonSchema         },
      {"time",    IsoTime(result.time)},
      {"line",    line                },
      {"device",  device              },
      {"kind",    kind.name           },
      {"address", AddressToJson(kind,   address)},
      {"ok",         !result.failure                         }
  };
}

ordered_json FailureToJson(const Failure& failure) {
  return {
      {"code",    failure.code                },
      {"message", failure.message             },
      {"request", BytesToJson(failure.request)},
      {"reply",   BytesToJson(failure.reply)  }
  };
}

void AddOutcome(ordered_json& json, const PollResult& result, Fields fields, const BYTE* record) {
  json["duration_ms"] = std::round(result.duration.count() * 1000) / 1000;
  if (result.failure) {
    json["error"] = FailureToJson(*result.failure);
    return;
  }
  json["record"] = RecordToJson(fields, record);
  const ordered_json physical = PhysicalToJson(fields, record);
  if (!physical.empty()) json["physical"] = physical;
}

std::string Subject(const Kind& kind, int address) {
  std::string text(kind.name);
  if (kind.HasAddress()) text += " at address " + std::to_string(address);
  return text;
}

void ShowFailure(const std::string& subject, const Failure& failure) {
  std::cerr << "fieldline: " << subject << ": " << Alert(failure.message) << '\n';
  if (!failure.request.empty()) std::cerr << "  sent      " << Hex(failure.request, 64) << '\n';
  if (!failure.reply.empty()) std::cerr << "  received  " << Hex(failure.reply, 64) << '\n';
}

}  // namespace fieldline::tool
