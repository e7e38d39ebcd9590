#pragma once

#include <string_view>

#include "fieldline/types.h"

namespace fieldline::tool {

// What protocol codes mean, for people; "unknown" for a code that has no name.

std::string_view ModbusFunctionName(BYTE function);
std::string_view ModbusExceptionName(BYTE exception);
std::string_view HexAsciiCommandName(BYTE cid2);
std::string_view HexAsciiReturnName(BYTE rtn);
std::string_view AlarmCommandName(BYTE command);
std::string_view CameraCommandName(BYTE command);

}  // namespace fieldline::tool
