// What a trapsess line says.
#include "devhost/check/TrapSession.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

TrapSession Read(const std::string& options) {
  return *ReadTrapSession(*ReadDirective("trapsess  " + options));
}

TEST(ATrapSession, HasItsTargetInFrontOfItsOptionsOrBehindThem) {
  EXPECT_EQ(Read("-v  2c  -c  reader  192.0.2.5:162").target, "192.0.2.5:162");
  EXPECT_EQ(Read("192.0.2.5  -v2c  -creader").target, "192.0.2.5");
  EXPECT_EQ(Read("-name  one  -Ci  -u  bob").target, "");
}

TEST(ATrapSession, NeedsAUserOrACommunity) {
  EXPECT_TRUE(Read("-u  bob  192.0.2.5").hasName);
  EXPECT_TRUE(Read("-v  2C  -c  reader  192.0.2.5").hasName);
  EXPECT_FALSE(Read("-c  reader  192.0.2.5").hasName);
  EXPECT_FALSE(Read("-v  1  -u  bob  192.0.2.5").hasName);
  EXPECT_TRUE(Read("-v  2c  --defCommunity=reader  192.0.2.5").hasName);
  EXPECT_TRUE(Read("--defSecurityName=bob  192.0.2.5").hasName);
  EXPECT_TRUE(Read("192.0.2.5").isV3);
  EXPECT_FALSE(Read("-v  1  192.0.2.5").isV3);
}

TEST(ATrapSession, HasAProblemWithWhatTheDaemonDoesNotKnow) {
  for (const char* const options : {"-z", "-v", "-v  2", "-v  3  -l  always", "-r  x", "-a  SHB", "-x  3DES", "-A  short",
                                    "-e  zz", "-e  0x80", "-v  2c  -c  reader  -r"}) {
    EXPECT_NE(Read(options).problem, "") << options;
  }
  for (const char* const options :
       {"-v  2c  -c  reader", "-l  authPriv  -a  SHA-256  -A  passphrase  -x  AES  -X  passphrase", "-r  1  -t  2",
        "-e  0x8000000001", "-Ci", "-d", "-t  0.5", "-t  2s", "-v  2c  -c  reader  --clientaddr=127.0.0.1", "--foo=bar"}) {
    EXPECT_EQ(Read(options).problem, "") << options;
  }
}

}  // namespace
}  // namespace devhost
