#pragma once

#include <string>

#include "python_values.h"

namespace example {

/// Has matplotlib draw a frame of `createFrame` into a PNG file: temperature and precipitation over
/// time, and how often which weather comes in each month of the year.
void drawWeather(const PyHandle& frame, const std::string& file);

}  // namespace example
