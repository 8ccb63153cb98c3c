#pragma once

#include "WorkspaceClass.h"
#include "runtime/JsonWriter.h"

#include <string_view>

namespace corvalog {

// The workspace as JSON: the general properties, then "items" with every persisted property of
// each channel, numbers as the workspace holds them. A member `key` of the object being written,
// or the whole output when the key is empty.
void writeWorkspaceJson(JsonWriter &json, const WorkspaceClass &ws, std::string_view key = {});

} // namespace corvalog
