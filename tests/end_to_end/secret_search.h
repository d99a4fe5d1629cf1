// Finds secrets where none may be: as they are, in Base64 at each of its three alignments, in hexadecimal, and as part
// of a URL.
//
// Threads: constant after construction. Ownership: a value.
#ifndef TESTS_END_TO_END_SECRET_SEARCH_H
#define TESTS_END_TO_END_SECRET_SEARCH_H

#include <filesystem>
#include <string>
#include <vector>

namespace end_to_end {

class SecretSearch {
 public:
  explicit SecretSearch(const std::vector<std::string>& secrets);

  // One line for each place, secret and form; empty: none was found.
  std::vector<std::string> InText(const std::string& place, const std::string& text) const;
  // In a file, or in every file of a directory.
  std::vector<std::string> InFiles(const std::filesystem::path& root) const;

 private:
  struct Form {
    std::string name;
    std::string bytes;
  };
  std::vector<Form> forms;
};

}  // namespace end_to_end

#endif
