#include "support/KepTestSupport.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace keptest {

std::atomic<int> CountedBody::live{0};

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "kep-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ec;
  std::filesystem::remove_all(path_, ec);
}

}  // namespace keptest
