#pragma once

#include "TarnRemoteClient.h"

#include <string>
#include <string_view>

// Wide text is UTF-16 on every system; the public header picks the code unit's type.
using WideChar = TarnWideChar;
using WideText = std::basic_string<WideChar>;
using WideView = std::basic_string_view<WideChar>;
