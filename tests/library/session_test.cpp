// What the session cache keeps: the instance record as JSON, and its cipher down to the SDK's helpers.
#include <json/json.h>

#include "session/instance_info_codec.h"
#include "session/session_cipher.h"
#include "tests/library/transcript.h"

namespace library_test {
namespace {

using qv_data_interface::DecryptSessionText;
using qv_data_interface::EncryptSessionText;
using qv_data_interface::InstanceInfoToJson;
using qv_data_interface::ParseInstanceInfo;

struct Codec : Transcript {
  static InstanceInfo Full() {
    InstanceInfo info;
    info.sessionId = "s";
    info.instanceNo = "i";
    info.userId = "u";
    info.appPackage = "p";
    info.sessionSignExpireTime = 1700000000001;
    info.sessionExpireTime = 1700000000002;
    info.endpoints = {"td", 1, "ud", 2, "wd", 3};
    info.subStreamInfoList = {{5, "", {"td5", 51, "ud5", 52, "wd5", 53}}, {6, "six", {"", 0, "", 0, "", 0}}};
    info.streamStrategyList = {7, -8};
    info.gCtrlNodeNo = "g";
    info.preemption = false;
    return info;
  }
  static std::string Written(const InstanceInfo& info) {
    std::string text = "is replaced";
    InstanceInfoToJson(info, text);
    return text;
  }
  static Json::Value Document(const InstanceInfo& info = Full()) {
    Json::Value root;
    Json::Reader().parse(Written(info), root);
    return root;
  }
  // On one line, with every key.
  static std::string Short(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
  }
  // Where the two differ.
  static std::string Difference(const Json::Value& before, const Json::Value& after) {
    if (before == after) return "";
    if (!before.isObject() || !after.isObject()) return " " + Short(after);
    std::string text;
    for (const std::string& key : after.getMemberNames()) {
      if (before[key] != after[key]) text += " " + key + Difference(before[key], after[key]);
    }
    return text;
  }
  // What becomes of a text: the reader's lines, or where the record differs from the full one.
  void Read(const std::string& what, const std::string& text) {
    InstanceInfo info;
    std::int32_t result = 0;
    EXPECT_NO_THROW(result = ParseInstanceInfo(text.c_str(), info)) << what;
    EXPECT_EQ(info.requestTag + info.message + std::to_string(info.code), "-1") << "the header is not cached";
    std::string line = what + ": " + (result == 0 ? "read" + Difference(Document(), Document(info)) : "");
    for (const std::string& call : Take()) line += call.substr(0, 60);
    Say(line);
  }
  // Each value of a part of the document, with another in its place or without it.
  void ReadWithEachChange(const std::string& path, Json::Value& document, Json::Value& part) {
    for (const std::string& key : part.getMemberNames()) {
      const Json::Value whole = part[key];
      for (const Json::Value& wrong :
           {Json::Value(3), Json::Value(Json::Int64(4294967296)), Json::Value(1e30), Json::Value("x"),
            Json::Value(true), Json::Value(), Json::Value(Json::arrayValue), Json::Value(Json::objectValue)}) {
        part[key] = wrong;
        Read(path + key + " " + Short(wrong), document.toStyledString());
      }
      part.removeMember(key);
      Read("no " + path + key, document.toStyledString());
      part[key] = whole;
    }
  }
};

TEST_F(Codec, WritesEveryKey) {
  Say(Written(InstanceInfo()));
  Say(Written(Full()));
}

TEST_F(Codec, ReadsRecordsOfAnyShape) {
  InstanceInfo withHeader = Full();
  withHeader.requestTag = withHeader.message = "header";
  withHeader.code = 0;
  Read("with a header", Written(withHeader));
  Json::Value document = Document();
  ReadWithEachChange("", document, document);
  ReadWithEachChange("streamInfo.", document, document["streamInfo"]);
  ReadWithEachChange("subStreamInfoList[0].", document, document["subStreamInfoList"][0]);
  for (const Json::Value& element : {Json::Value("x"), Json::Value(9), Json::Value(Json::objectValue)}) {
    document["streamStrategyList"].append(element);
    document["subStreamInfoList"][0] = element;
    Read("with elements " + Short(element), document.toStyledString());
    document["subStreamInfoList"] = Document()["subStreamInfoList"];
    Read("with a strategy " + Short(element), document.toStyledString());
  }
  using Text = std::string;
  for (const Text& text : {Text(), Text("{"), Text("no json"), Text("{\"sessionId\" : }"), Text("5"), Text("[]"),
                           Text("null"), Text(100000, '['), Text(100000, '{')}) {
    Read(text.substr(0, 20), text);
  }
}

TEST_F(Codec, AFailedReadKeepsWhatStoodBeforeTheFailingKeyAndAppendsStrategies) {
  Json::Value document = Document();
  document["subStreamInfoList"][1].removeMember("webSocketPort");
  InstanceInfo info;
  info.streamStrategyList = {1};
  info.subStreamInfoList.resize(3);
  EXPECT_EQ(ParseInstanceInfo(document.toStyledString().c_str(), info), -1);
  Say("appended" + Difference(Document(), Document(info)));
  document.removeMember("sessionId");
  EXPECT_EQ(ParseInstanceInfo(document.toStyledString().c_str(), info = InstanceInfo()), -1);
  EXPECT_EQ(Written(info), Written(InstanceInfo()));
}

struct Cipher : Transcript {
  static std::string Encrypt(const std::string& plain) {
    return EncryptSessionText(plain.data(), static_cast<std::int32_t>(plain.size()));
  }
  static std::string Decrypt(const std::string& text) {
    return DecryptSessionText(text.data(), static_cast<std::int32_t>(text.size()));
  }
};

TEST_F(Cipher, GivesBackEveryByteAndFailsWithOneLine) {
  STEP(Encrypt(""));
  STEP(Encrypt(std::string("with\0nul", 8)));
  STEP(Decrypt(Encrypt(std::string("with\0nul", 8))));
  Services().encryptFails = true;
  STEP(Encrypt("plain"));
  Say("\nText that is no base64 reaches the decipher step, too, which decides.");
  STEP(Decrypt("?!"));
  STEP(Services().cipherCalls.back().input);

  std::vector<unsigned char> key(40), iv;
  qv_data_interface::PrepareCacheKeyMaterial(key, iv);
  for (const fakes::CipherCall& call : Services().cipherCalls) {
    EXPECT_EQ(call.key, key);
    EXPECT_EQ(call.iv, iv);
  }
  for (const auto& bytes : {key, iv}) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const int character = bytes[i] ^ (i % 2 == 0 ? 0x5A : 0xA5);
      EXPECT_TRUE(character >= 0x20 && character < 0x7F) << "byte " << i << " is no printable material under its mask";
    }
  }
}

}  // namespace
}  // namespace library_test
