// What can be measured of the page; each prints what it has found.
#pragma once

namespace morvik::test {

/// From a script's call of morvik.led.light to the page: milliseconds to the changed DOM, and to
/// the end of the frame in which that is painted.
void measureLatency();

/// The bytes and requests of the page's first visit.
void measureWeight();

/// From the start of script/demo on a built tree to the lit LED on a page that is opened at once.
void measureStart();

/// From a save of an application that runs to the first line of its restarted script, fifty times.
void measureSave();

/// The memory of morvik-dev with three applications and a page, over the messages of two hours.
void measureMemory();

}  // namespace morvik::test
