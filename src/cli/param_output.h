#pragma once
// A parameter table as JSON: "parameters": [{"name", "meaning", "unit", "values"}], with
// one value per motor, as the main window shows it.
#include "cli/json_writer.h"
#include "config/param_table.h"

namespace kdx::cli {

inline void paramsJson(JsonWriter& json, const std::vector<ParamRow>& rows, bool bothMotors)
{
    json.key("parameters").beginArray();
    for (const ParamRow& r : rows) {
        json.beginObject().key("name").value(r.name).key("meaning").value(r.meaning).key("unit").value(r.unit);
        json.key("values").beginArray().value(r.values[0]);
        if (bothMotors) json.value(r.values[1]);
        json.endArray().endObject();
    }
    json.endArray();
}

} // namespace kdx::cli
