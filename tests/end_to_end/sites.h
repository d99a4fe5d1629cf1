// Clouds with a client each, so that many connections go wrong side by side within the time of one.
//
// Threads: the test's. Ownership: a site owns its cloud and its client; the authority file belongs to the fixture.
#ifndef TESTS_END_TO_END_SITES_H
#define TESTS_END_TO_END_SITES_H

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "reference/common/settings.h"
#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {

// Row: what sets the sites apart; has a name, and Options() of the cloud.
template <class Row>
struct Site {
  explicit Site(const Row& row) : row(row), cloud(row.Options()) {}

  // Init with a new front end and GetPhoneConnect.
  void Connect(const qv_data_interface::QvDataSystemParam& system, const std::string& baseUrl) {
    frontEnd = std::make_shared<FrontEnd>();
    const qv_data_interface::QvVideoParam video;
    ASSERT_EQ(
        controller->Init("user", "device", "token", row.name.c_str(), 0, frontEnd, &video, &system, 7, baseUrl.c_str()),
        0);
    ASSERT_EQ(controller->GetPhoneConnect(), 0);
  }

  // Of its HTTP service or of its default line, as the log names it.
  std::string Address(bool isHttp) const {
    const std::string url = cloud.BaseUrl();
    if (isHttp) return url.substr(url.find("//") + 2);
    return "localhost:" + std::to_string(cloud.LinePort(qv_cloud::kDefaultLine));
  }

  bool ReleaseIsPrompt() {
    const auto begin = std::chrono::steady_clock::now();
    controller->ReleasePhoneConnect();
    return std::chrono::steady_clock::now() - begin < std::chrono::milliseconds(500);
  }

  const Row row;
  qv_cloud::Cloud cloud;
  std::shared_ptr<FrontEnd> frontEnd;
  std::shared_ptr<qv_data_interface::IQVDataInterface> controller = qv_data_interface::IQVDataInterface::Create();
};

struct Sites : EndToEnd {
 protected:
  // One for each row; the clients trust all of their authorities.
  template <class Row>
  std::vector<std::unique_ptr<Site<Row>>> Make(const std::vector<Row>& rows) {
    std::vector<std::unique_ptr<Site<Row>>> sites;
    const std::filesystem::path file = directory / "authorities.pem";
    std::ofstream authorities(file, std::ios::binary);
    for (const Row& row : rows) {
      sites.push_back(std::make_unique<Site<Row>>(row));
      authorities << ReadFile(sites.back()->cloud.AuthorityFile());
    }
    reference::SetAuthorityFile(file);
    return sites;
  }

  // Whether a line of the log names the address ("host:port") and says that.
  bool Logged(const std::string& address, const std::string& text) const {
    std::istringstream log(Log());
    for (std::string line; std::getline(log, line);) {
      if (line.find(address) != std::string::npos && line.find(text) != std::string::npos) return true;
    }
    return false;
  }
};

}  // namespace end_to_end

#endif
