// The folder where programs of this user keep such things.
#include "state-folder.h"

#include "device/owned.h"

namespace morvik::devkit {

std::string usualStateFolder() {
  return GText(g_build_filename(g_get_user_state_dir(), "morvik-dev", nullptr)).get();
}

}  // namespace morvik::devkit
