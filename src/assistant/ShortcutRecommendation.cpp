#include "assistant/ShortcutRecommendation.h"

#include <uuid/uuid.h>

namespace velmora {

RecommendationID RecommendationID::random() {
    RecommendationID id;
    uuid_generate_random(id.bytes.data());
    return id;
}

std::string RecommendationID::uuidString() const {
    char text[37];
    uuid_unparse_upper(bytes.data(), text);
    return std::string(text, 36);
}

}  // namespace velmora
