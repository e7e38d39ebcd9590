#include "sim/devices/power/elec.h"

namespace fieldline::sim {

const PowerMeter::RegisterMap ElecMeter::kMap = {
    .size = 57,
    .counter = 0,
    .single = 50,
    .phase_stride = 1,
    .quantities = {{
        // total, phase 1, step
        {"q1", 34, 35, 10},
        {"q2", 38, 39, 10},
        {"q3", 42, 43, 10},
        {"q4", 46, 47, 1},
        {"q5", kNone, 51, 1},
        {"q6", kNone, 54, 25},
    }},
};

}  // namespace fieldline::sim
