#include "tools/protocol_names.h"

namespace fieldline::tool {
namespace {

struct Name {
  BYTE code;
  std::string_view name;
};

template <std::size_t kSize>
std::string_view Find(const Name (&names)[kSize], BYTE code) {
  for (const Name& name : names) {
    if (name.code == code) return name.name;
  }
  return "unknown";
}

}  // namespace

std::string_view ModbusFunctionName(BYTE function) {
  static constexpr Name kNames[] = {
      {1,  "read coils"              },
      {2,  "read discrete inputs"    },
      {3,  "read holding registers"  },
      {4,  "read input registers"    },
      {5,  "write single coil"       },
      {6,  "write single register"   },
      {15, "write multiple coils"    },
      {16, "write multiple registers"},
  };
  return Find(kNames, function);
}

std::string_view ModbusExceptionName(BYTE exception) {
  static constexpr Name kNames[] = {
      {1,  "illegal function"              },
      {2,  "illegal data address"          },
      {3,  "illegal data value"            },
      {4,  "device failure"                },
      {5,  "acknowledge"                   },
      {6,  "device busy"                   },
      {7,  "negative acknowledge"          },
      {8,  "memory parity error"           },
      {10, "gateway path unavailable"      },
      {11, "gateway target did not respond"},
  };
  return Find(kNames, exception);
}

std::string_view HexAsciiCommandName(BYTE cid2) {
  static constexpr Name kNames[] = {
      {0x41, "analog values, floating point"},
      {0x42, "analog values, fixed point"   },
      {0x43, "switch states"                },
      {0x44, "alarm states"                 },
      {0x47, "parameters, fixed point"      },
  };
  return Find(kNames, cid2);
}

std::string_view HexAsciiReturnName(BYTE rtn) {
  static constexpr Name kNames[] = {
      {0, "carried out"           },
      {1, "wrong protocol version"},
      {2, "wrong frame checksum"  },
      {3, "wrong length checksum" },
      {4, "unknown command"       },
      {5, "wrong command format"  },
      {6, "invalid data"          },
  };
  return Find(kNames, rtn);
}

std::string_view AlarmCommandName(BYTE command) {
  static constexpr Name kNames[] = {
      {0x01, "get identity"   },
      {0x02, "get status"     },
      {0x03, "clear text"     },
      {0x04, "set text"       },
      {0x05, "set snapshot"   },
      {0x06, "signal quality" },
      {0x07, "remote requests"},
      {0x10, "reset GSM"      },
      {0x11, "send SMS"       },
      {0x12, "begin MMS"      },
      {0x13, "MMS data"       },
      {0x14, "end of MMS data"},
      {0x15, "send MMS"       },
      {0x20, "reset PSTN"     },
      {0x21, "dial"           },
      {0x31, "speak"          },
      {0x32, "switch relay"   },
      {0x33, "read inputs"    },
  };
  return Find(kNames, command);
}

std::string_view CameraCommandName(BYTE command) {
  static constexpr Name kNames[] = {
      {0x26, "reset"           },
      {0x31, "write register"  },
      {0x32, "read frame"      },
      {0x34, "get frame length"},
      {0x36, "control frame"   },
  };
  return Find(kNames, command);
}

}  // namespace fieldline::tool
