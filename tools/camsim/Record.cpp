#include "Record.h"

#include "HttpRequest.h"

namespace camsim {

std::string RequestRecord::Header(const std::string& name) const {
  for (const auto& header : headers) {
    if (SameTextIgnoringCase(header.first, name)) return header.second;
  }
  return "";
}

std::string RequestRecord::Param(const std::string& key) const {
  return QueryValue(query, key);
}

}  // namespace camsim
