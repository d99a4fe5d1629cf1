// What the session cache keeps: the instance record as JSON, and its cipher down to the SDK's helpers.
#include <json/json.h>

#include "session/instance_info_codec.h"
#include "session/session_cipher.h"
#include "tests/library/library_test.h"

namespace library_test {
namespace {

using qv_data_interface::DecryptSessionText;
using qv_data_interface::EncryptSessionText;
using qv_data_interface::InstanceInfoToJson;
using qv_data_interface::ParseInstanceInfo;

struct Codec : LibraryTest {
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
  static std::string Text(const InstanceInfo& info) {
    std::string text = "is replaced";
    InstanceInfoToJson(info, text);
    return text;
  }
  static Json::Value Document(const std::string& text = Text(Full())) {
    Json::Value root;
    Json::Reader().parse(text, root);
    return root;
  }
  // Where the keys of a section stand in a document.
  static Json::Value& Section(Json::Value& root, const std::string& section) {
    if (section == "root") return root;
    return section == "streamInfo" ? root[section] : root[section][1];
  }
  static std::int32_t Parse(const Json::Value& document, InstanceInfo& info) {
    return ParseInstanceInfo(document.toStyledString().c_str(), info);
  }
  // The read fails with this one line; gives what it read until then.
  InstanceInfo ExpectFailure(const Json::Value& document, const std::string& line) {
    InstanceInfo info;
    EXPECT_EQ(Parse(document, info), -1) << line;
    EXPECT_THAT(Take(), ElementsAre("log60 Json Get " + line + " failed"));
    return info;
  }
};

TEST_F(Codec, EveryKeyIsWrittenInStyledForm) {
  for (const char* const part :
       {R"("preemption" : true)", R"("streamStrategyList" : [])", R"("subStreamInfoList" : [])"}) {
    EXPECT_THAT(Text(InstanceInfo()), testing::HasSubstr(part));
  }
  EXPECT_EQ(Text(Full()), Document(R"({"sessionId":"s","instanceNo":"i","userId":"u","appPackage":"p",
                         "sessionSignExpireTime":1700000000001,"sessionExpireTime":1700000000002,
                         "streamInfo":{"tcpDomain":"td","tcpPort":1,"udpDomain":"ud","udpPort":2,"webSocketDomain":"wd",
                         "webSocketPort":3},"subStreamInfoList":[{"ispCode":5,"label":"","tcpDomain":"td5",
                         "tcpPort":51,"udpDomain":"ud5","udpPort":52,"webSocketDomain":"wd5","webSocketPort":53},
                         {"ispCode":6,"label":"six","tcpDomain":"","tcpPort":0,"udpDomain":"","udpPort":0,
                         "webSocketDomain":"","webSocketPort":0}],"streamStrategyList":[7,-8],"gCtrlNodeNo":"g",
                         "preemption":false})")
                              .toStyledString());
}

TEST_F(Codec, ARecordComesBackWithoutItsHeader) {
  InstanceInfo original = Full();
  original.requestTag = original.message = "header";
  original.code = 0;
  InstanceInfo info;
  EXPECT_EQ(ParseInstanceInfo(Text(original).c_str(), info), 0);
  EXPECT_EQ(Text(info), Text(original));
  EXPECT_EQ(info.requestTag + info.message, "");
  EXPECT_EQ(info.code, -1);
  EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(Codec, ARequiredKeyThatIsMissingOrOfAnotherTypeFailsTheRead) {
  const Json::Value wrongs = Document(R"({"root": {"sessionId": 5},
      "streamInfo": {"webSocketDomain": true, "webSocketPort": 4294967296},
      "subStreamInfoList": {"ispCode": "6", "label": 6, "webSocketDomain": [], "webSocketPort": "443"}})");
  for (const std::string& section : wrongs.getMemberNames()) {
    for (const std::string& key : wrongs[section].getMemberNames()) {
      Json::Value document = Document();
      for (const Json::Value& value : {wrongs[section][key], Json::Value()}) {
        Section(document, section)[key] = value;
        ExpectFailure(document, "[" + section + "][" + key + "]");
      }
      Section(document, section).removeMember(key);
      ExpectFailure(document, "[" + section + "][" + key + "]");
    }
  }
}

TEST_F(Codec, AnOptionalKeyThatIsMissingOrOfAnotherTypeIsPassedOver) {
  const Json::Value wrongs = Document(R"({
      "root": {"instanceNo": 1, "userId": 1, "appPackage": true, "sessionSignExpireTime": "1700000000001",
               "sessionExpireTime": 1e30, "gCtrlNodeNo": 1, "preemption": 0, "streamStrategyList": "x"},
      "streamInfo": {"tcpDomain": 1, "tcpPort": "1", "udpDomain": 1, "udpPort": 4294967296},
      "subStreamInfoList": {"tcpDomain": 1, "tcpPort": "1", "udpDomain": 1, "udpPort": "1"}})");
  Json::Value wrong = Document();
  Json::Value without = Document();
  for (const std::string& section : wrongs.getMemberNames()) {
    for (const std::string& key : wrongs[section].getMemberNames()) {
      Section(wrong, section)[key] = wrongs[section][key];
      Section(without, section).removeMember(key);
    }
  }
  InstanceInfo expected;
  expected.sessionId = "s";
  expected.endpoints = {"", 0, "", 0, "wd", 3};
  expected.subStreamInfoList = Full().subStreamInfoList;
  for (const Json::Value& document : {wrong, without}) {
    InstanceInfo info;
    EXPECT_EQ(Parse(document, info), 0);
    EXPECT_EQ(Text(info), Text(expected));
  }
  EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(Codec, AValueOfTheWrongShapeIsJudgedWhereItStands) {
  for (const Json::Value& wrong :
       {Json::Value(), Json::Value("x"), Json::Value(3), Json::Value(Json::arrayValue), Json::Value(true)}) {
    InstanceInfo info;
    Json::Value document = Document();
    document["subStreamInfoList"] = wrong;
    EXPECT_EQ(Parse(document, info), 0) << "no list, or an empty one, is no error";
    EXPECT_THAT(info.subStreamInfoList, IsEmpty());
    EXPECT_THAT(Take(), IsEmpty());
    document = Document();
    document["subStreamInfoList"][0] = wrong;
    ExpectFailure(document, "[subStreamInfoList][ispCode]");
    document["streamInfo"] = wrong;
    ExpectFailure(document, "streamInfo");
  }
}

TEST_F(Codec, AFailedReadKeepsWhatStoodBeforeTheFailingKey) {
  Json::Value document = Document();
  document["subStreamInfoList"][1].removeMember("webSocketPort");
  EXPECT_EQ(Text(ExpectFailure(document, "[subStreamInfoList][webSocketPort]")), Text(Full()));
  document.removeMember("sessionId");
  EXPECT_EQ(Text(ExpectFailure(document, "[root][sessionId]")), Text(InstanceInfo()));
}

TEST_F(Codec, StrategiesAreAppendedAndCarrierLinesReplaced) {
  InstanceInfo info;
  info.streamStrategyList = {1};
  info.subStreamInfoList.resize(3);
  Json::Value document = Document();
  document["streamStrategyList"].append("not an integer");
  document["streamStrategyList"].append(9);
  EXPECT_EQ(Parse(document, info), 0);
  EXPECT_THAT(info.streamStrategyList, ElementsAre(1, 7, -8, 9));
  EXPECT_EQ(info.subStreamInfoList.size(), 2U);
}

TEST_F(Codec, HostileTextsFailWithOneLineAndWithoutThrowing) {
  using Text = std::string;
  for (const Text& text : {Text(), Text("{"), Text("no json"), Text("{\"sessionId\" : }"), Text("5"), Text("[]"),
                           Text("null"), Text(100000, '['), Text(100000, '{')}) {
    InstanceInfo info;
    EXPECT_NO_THROW(EXPECT_EQ(ParseInstanceInfo(text.c_str(), info), -1)) << text.substr(0, 10);
    EXPECT_THAT(Take(), ElementsAre(StartsWith("log60 "))) << text.substr(0, 10);
  }
  InstanceInfo info;
  ParseInstanceInfo("no json", info);
  EXPECT_THAT(Take(), ElementsAre("log60 parse json[no json] failed"));
}

struct Cipher : LibraryTest {
  static std::string Encrypt(const std::string& plain) {
    return EncryptSessionText(plain.data(), static_cast<std::int32_t>(plain.size()));
  }
  static std::string Decrypt(const std::string& text) {
    return DecryptSessionText(text.data(), static_cast<std::int32_t>(text.size()));
  }
};

TEST_F(Cipher, ATextComesBackByteForByte) {
  for (const std::string& plain : {std::string(), std::string("plain"), std::string("with\0nul", 8)}) {
    const std::string text = Encrypt(plain);
    EXPECT_NE(text, plain);
    EXPECT_EQ(Decrypt(text), plain);
    EXPECT_EQ(Services().cipherCalls[0].input, plain);
    EXPECT_THAT(Take(), ElementsAre("cipher.Encrypt", "cipher.Decrypt"));
    Services().cipherCalls.clear();
  }
}

TEST_F(Cipher, KeyAndVectorArePrintableMaterialUnderTheAlternatingMasks) {
  Decrypt(Encrypt("plain"));
  ASSERT_EQ(Services().cipherCalls.size(), 2U);
  const fakes::CipherCall& call = Services().cipherCalls[0];
  EXPECT_EQ(call.key, Services().cipherCalls[1].key);
  EXPECT_EQ(call.iv, Services().cipherCalls[1].iv);
  for (const auto& bytes : {call.key, call.iv}) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const int character = bytes[i] ^ (i % 2 == 0 ? 0x5A : 0xA5);
      EXPECT_TRUE(character >= 0x20 && character < 0x7F) << "byte " << i;
    }
  }
  std::vector<unsigned char> key(40), iv;
  qv_data_interface::PrepareCacheKeyMaterial(key, iv);
  EXPECT_EQ(key, call.key);
  EXPECT_EQ(iv, call.iv);
}

// Text that is no base64 reaches the decipher step, too, which decides.
TEST_F(Cipher, AFailureGivesAnEmptyTextAndOneLine) {
  Services().encryptFails = true;
  EXPECT_EQ(Encrypt("plain"), "");
  EXPECT_EQ(Decrypt("?!"), "");
  EXPECT_EQ(Services().cipherCalls[1].input, "");
  EXPECT_THAT(Take(), ElementsAre("cipher.Encrypt", "log60 Aes256Encrypt Failed", "cipher.Decrypt",
                                  "log60 Aes256Decrypt Failed"));
}

}  // namespace
}  // namespace library_test
