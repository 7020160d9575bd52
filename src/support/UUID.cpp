#include "support/UUID.h"

#include <uuid/uuid.h>

namespace velmora::support {

UUID UUID::random() {
    UUID id;
    uuid_generate_random(id.bytes.data());
    return id;
}

std::string UUID::uuidString() const {
    char text[37];
    uuid_unparse_upper(bytes.data(), text);
    return std::string(text, 36);
}

}  // namespace velmora::support
