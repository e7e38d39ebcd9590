#include "sim/devices/power/elec_y.h"

namespace fieldline::sim {

const PowerMeter::RegisterMap ElecYMeter::kMap = {
    .size = 41,
    .counter = 33,
    .single = 26,
    .phase_stride = 8,
    .quantities = {{
        // total, phase 1, step
        {"q1", 27, 4, 10},
        {"q2", 29, 6, 10},
        {"q3", 30, 7, 10},
        {"q4", 28, 5, 1},
        {"q5", kNone, 0, 1},
        {"q6", kNone, 2, 1},
    }},
};

}  // namespace fieldline::sim
