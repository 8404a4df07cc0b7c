// Fresh UUIDs in lower case.
#include "host/uuid.h"

#include <uuid/uuid.h>

#include <algorithm>
#include <array>
#include <cctype>

namespace morvik {

// Some builds of the library write capital letters; device servers compare the texts as they are.
std::string newUuid() {
  uuid_t bytes;
  uuid_generate(bytes);
  std::array<char, UUID_STR_LEN> text{};
  uuid_unparse(bytes, text.data());
  std::string lower(text.data());
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

}  // namespace morvik
