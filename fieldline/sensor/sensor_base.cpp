#include "fieldline/sensor/sensor_base.h"

#include <algorithm>
#include <bit>
#include <iterator>

#include "fieldline/sensor/modbus.h"

// Records hold numbers in the processor's byte order, and applications read them as little-endian.
static_assert(std::endian::native == std::endian::little);
// Applications on the 32-bit unit read the record at byte 152 of its driver.
static_assert(sizeof(void*) != 4 || sizeof(CSensorBase) == 152);
static_assert(sizeof(ENUM_SERDATKIND) == 4 && sizeof(ENUM_SERTYPE) == 4);

CSensorBase::CSensorBase(ENUM_SERDATKIND kind) : m_eKind(kind) {}

CSensorBase& CSensorBase::operator=(const CSensorBase& other) {
  if (this == &other) return *this;
  m_byReserved = other.m_byReserved;
  std::copy(std::begin(other.m_abyReserved), std::end(other.m_abyReserved), m_abyReserved);
  m_nFlags = other.m_nFlags;
  m_eKind = other.m_eKind;
  std::copy(std::begin(other.m_byCmd), std::end(other.m_byCmd), m_byCmd);
  return *this;
}

CSensorBase::~CSensorBase() = default;

int CSensorBase::GetData(ISerBase*, int) { return 0; }

int CSensorBase::ModBusCmd(BYTE addr, BYTE func, WORD reg, WORD count) {
  return fieldline::BuildModbusRead(m_byCmd, addr, func, reg, count);
}

bool CSensorBase::SendCommand(ISerBase* port, int length) { return port->Write(m_byCmd, length) == length; }
