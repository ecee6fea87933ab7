#include "TrackingView.h"

#include "Output.h"
#include "Time.h"

namespace tarn {

std::string stateName(const TrackingState& state)
{
    const bool expired = state.expiry != 0 && state.expiry <= now();
    if (state.locked) {
        return expired ? "locked, expired" : "locked";
    }
    return expired ? "expired" : "open";
}

std::string stateTable(const std::vector<TrackingState>& states)
{
    Table table({"RECIPIENT", "STATE", "EXPIRES", "MESSAGE"});
    for (const auto& state : states) {
        table.add({state.recipient, stateName(state), localTime(state.expiry), state.message});
    }
    return table.text();
}

nlohmann::json stateObject(const TrackingState& state)
{
    return {{"recipient", state.recipient},
            {"locked", state.locked},
            {"statusMessage", state.message},
            {"expiryDate", state.expiry},
            {"expires", isoTime(state.expiry)}};
}

nlohmann::json stateObjects(std::span<const TrackingState> states)
{
    nlohmann::json objects = nlohmann::json::array();
    for (const auto& state : states) {
        objects.push_back(stateObject(state));
    }
    return objects;
}

} // namespace tarn
