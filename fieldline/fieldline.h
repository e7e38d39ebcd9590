#pragma once

// Everything an application needs: ports, drivers, and the two set-up calls.

#include "fieldline/drivers/basic/sensor_envir.h"
#include "fieldline/platform/device_name.h"
#include "fieldline/platform/file.h"
#include "fieldline/sensor/sensor_factory.h"
#include "fieldline/serial/hub_ser_factory.h"
#include "fieldline/serial/ser_base.h"
