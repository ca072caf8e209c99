#include "kep/base/KepConfiguration.h"

#include "kep/base/KepRConfiguration.h"
#include "kep/base/KepStartupPath.h"

KEP_METHODS_Configuration(KEP_DEFINE_BRIDGE) KEP_METHODS_Configuration(KEP_DEFINE_HANDLE_METHOD)

    bool KepConfiguration::getStartupConfigPath(char const* configName, char* buffer, int size) {
  return _KepGetStartupConfigPath(configName, buffer, size);
}
