// An option of the command line that takes one of a few names.
//
// Threads: the caller's. Ownership: target and names outlive the parsing.
#ifndef QV_CLOUD_CHOICE_OPTION_H
#define QV_CLOUD_CHOICE_OPTION_H

#include <CLI/CLI.hpp>
#include <map>
#include <string>

namespace qv_cloud {

template <class Choice>
CLI::Option* AddChoice(CLI::App& app, const char* name, Choice& target, const std::map<std::string, Choice>& names,
                       const char* help) {
  const auto take = [&target, &names](const std::string& given) { target = names.at(given); };
  return app.add_option_function<std::string>(name, take, help)->check(CLI::IsMember(&names))->type_name("NAME");
}

}  // namespace qv_cloud

#endif
