#pragma once

#include <cstdint>

// The record of both power meters: a counter, four quantities with a total and a value for each phase, a single value,
// and two quantities with phase values only. The meter defines what they are and their units.
struct ELEC_DATA {
  std::uint32_t counter;
  std::uint32_t q1_total;
  std::uint32_t q1_phase1;
  std::uint32_t q1_phase2;
  std::uint32_t q1_phase3;
  std::uint32_t q2_total;
  std::uint32_t q2_phase1;
  std::uint32_t q2_phase2;
  std::uint32_t q2_phase3;
  std::uint32_t q3_total;
  std::uint32_t q3_phase1;
  std::uint32_t q3_phase2;
  std::uint32_t q3_phase3;
  std::uint32_t q4_total;
  std::uint32_t q4_phase1;
  std::uint32_t q4_phase2;
  std::uint32_t q4_phase3;
  std::uint32_t single;
  std::uint32_t q5_phase1;
  std::uint32_t q5_phase2;
  std::uint32_t q5_phase3;
  std::uint32_t q6_phase1;
  std::uint32_t q6_phase2;
  std::uint32_t q6_phase3;
};
static_assert(sizeof(ELEC_DATA) == 96);
