// A JSON document on one line.
//
// Threads: a pure function. Ownership: none.
#ifndef REFERENCE_COMMON_COMPACT_JSON_H
#define REFERENCE_COMMON_COMPACT_JSON_H

#include <json/value.h>
#include <json/writer.h>

#include <memory>
#include <sstream>
#include <string>

namespace reference {

// Not by Json::writeString, whose stream keeps a failed allocation to itself: half a document would be sent.
inline std::string CompactJson(const Json::Value& document) {
  std::ostringstream text;
  text.exceptions(std::ios::badbit | std::ios::failbit);
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  const std::unique_ptr<Json::StreamWriter> writer(builder.newStreamWriter());
  writer->write(document, &text);
  return text.str();
}

}  // namespace reference

#endif
