#pragma once

#include "Library.h"
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace tarn {

// How tracking states are shown, for people and for scripts.
std::string stateName(const TrackingState& state);
std::string stateTable(const std::vector<TrackingState>& states);
nlohmann::json stateObject(const TrackingState& state);
nlohmann::json stateObjects(const std::vector<TrackingState>& states);

} // namespace tarn
