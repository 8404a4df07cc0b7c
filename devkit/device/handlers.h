// One function for each payload that the device answers; device.cc holds the table. To teach the
// device a new one: a file like led.cc, a line here, a line in the table.
#pragma once

#include "device/exchange.h"

namespace morvik::devkit {

void answerInteractiveMode(const Exchange& exchange);
void answerPing(const Exchange& exchange);
void answerInfoQuery(const Exchange& exchange);
void answerLed(const Exchange& exchange);

}  // namespace morvik::devkit
