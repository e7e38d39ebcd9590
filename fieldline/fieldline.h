#pragma once

// Everything an application needs: ports, drivers, and the two set-up calls.

#include "fieldline/alarm/hub_alarm.h"
#include "fieldline/display/hub_monitor.h"
#include "fieldline/drivers/ascii/sensor_battery.h"
#include "fieldline/drivers/ascii/sensor_cybermate.h"
#include "fieldline/drivers/basic/sensor_di.h"
#include "fieldline/drivers/basic/sensor_envir.h"
#include "fieldline/drivers/basic/sensor_leak.h"
#include "fieldline/drivers/basic/sensor_onoff.h"
#include "fieldline/drivers/imaging/sensor_card_k.h"
#include "fieldline/drivers/power/sensor_airc.h"
#include "fieldline/drivers/power/sensor_elec.h"
#include "fieldline/drivers/power/sensor_elec_y.h"
#include "fieldline/drivers/power/sensor_emerson.h"
#include "fieldline/drivers/power/sensor_ups.h"
#include "fieldline/platform/device_name.h"
#include "fieldline/platform/file.h"
#include "fieldline/sensor/sensor_factory.h"
#include "fieldline/serial/hub_ser_factory.h"
#include "fieldline/serial/ser_base.h"
