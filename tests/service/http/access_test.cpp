#include "service/http/access.h"

#include <gmock/gmock.h>

#include "polling/usage_error.h"
#include "tests/support/temp_directory.h"

namespace fieldline::service {
namespace {

using testing::HasSubstr;
using Verdict = Access::Verdict;

TEST(Access, WithoutATokenOnlyByAnAddress) {
  const Access access({}, "room-7");
  for (const char* const host : {"127.0.0.1:8080", "127.0.0.1", "localhost:8080", "[::1]:8080"}) {
    EXPECT_EQ(access.Check({host, "", ""}), Verdict::kAllowed) << host;
  }
  for (const char* const host : {"", "evil.example", "127.0.0.1.evil.example:8080", "localhost.evil.example"}) {
    EXPECT_EQ(access.Check({host, "", ""}), Verdict::kForeignHost) << host;
  }
  EXPECT_EQ(access.Cookie(), "");
}

TEST(Access, WithATokenByCookieOrHeader) {
  const TempDirectory directory;
  directory.WriteFile("token", "0123456789abcdef\n");
  const Access access({.token_file = directory.Path("token")}, "room-7");
  EXPECT_EQ(access.Check({"unit.example", "Bearer 0123456789abcdef", ""}), Verdict::kAllowed);
  EXPECT_EQ(access.Check({"unit.example", "", "a=b; fieldline-room-7=0123456789abcdef"}), Verdict::kAllowed);
  const Access::Claims refused[] = {
      {"127.0.0.1", "",                                        ""                                  },
      {"",          "Bearer ",                                 ""                                  },
      {"",          "Bearer 0123456789abcde",                  ""                                  },
      {"",          "Bearer 0123456789abcdef0",                ""                                  },
      {"",          "Bearer 0123456789abcdeg",                 ""                                  },
      {"",          "Bearer 0123456789abcdef0123456789abcdef", ""                                  },
      {"",          "0123456789abcdef",                        ""                                  },
      {"",          "",                                        "fieldline-room-8=0123456789abcdef" },
      {"",          "",                                        "xfieldline-room-7=0123456789abcdef"},
      {"",          "",                                        "fieldline-room-7=;=;;"             },
      {"",          "Bearer wrong",                            "fieldline-room-7=0123456789abcdef" },
  };
  for (const Access::Claims& claims : refused) {
    EXPECT_EQ(access.Check(claims), Verdict::kNoToken) << claims.authorization << claims.cookie;
  }
  EXPECT_EQ(access.Cookie(), "fieldline-room-7=0123456789abcdef; Path=/; Max-Age=31536000; HttpOnly; SameSite=Strict");
}

TEST(Access, RefusesAWeakToken) {
  const TempDirectory directory;
  const auto refusal = [&directory](const std::string& token) -> std::string {
    directory.WriteFile("token", token);
    try {
      const Access access({.token_file = directory.Path("token")}, "room-7");
    } catch (const UsageError& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(refusal("0123456789abcdef"), "");
  EXPECT_THAT(refusal(""), HasSubstr("a token has 16 to 256"));
  EXPECT_THAT(refusal("short"), HasSubstr("a token has 16 to 256"));
  EXPECT_THAT(refusal("0123456789abcdef; Path"), HasSubstr("a token has 16 to 256"));
  EXPECT_THROW(Access({.token_file = "/no/such/file"}, "room-7"), UsageError);
}

}  // namespace
}  // namespace fieldline::service
