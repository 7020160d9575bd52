// A colour's channels all lie between 0 and 1, as every chip needs them.
#pragma once

#include <string>

#include "FuzzPlatform.h"
#include "ui/Node.h"

namespace velmora::fuzz {

inline void checkColor(const ui::Color& color, const std::string& what) {
    for (double channel : {color.red, color.green, color.blue, color.alpha}) {
        // Written so that NaN fails too.
        if (!(channel >= -1e-9 && channel <= 1 + 1e-9)) fail(what + " has a channel outside 0...1");
    }
}

}  // namespace velmora::fuzz
