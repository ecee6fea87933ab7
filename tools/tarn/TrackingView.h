#pragma once

#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <tarn/Types.h>
#include <vector>

namespace tarn {

// How tracking states are shown, for people and for scripts.
std::string stateName(const TrackingState& state);
std::string stateTable(const std::vector<TrackingState>& states);
nlohmann::json stateObject(const TrackingState& state);
nlohmann::json stateObjects(std::span<const TrackingState> states);

} // namespace tarn
