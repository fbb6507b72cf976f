#pragma once

#include <string>

#include "program.h"

namespace example {

/// Has matplotlib draw a frame of `createFrame` into a PNG file: temperature and precipitation over
/// time, and how often which weather comes in each month of the year.
void drawWeather(const py::Session& python, const py::Object& frame, const std::string& file);

}  // namespace example
