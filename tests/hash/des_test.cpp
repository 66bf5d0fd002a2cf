// DES and triple DES: the known-answer tables of the standard validation
// suite, triple-DES examples, and the properties the cipher must have.
#include "oru/hash.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>

namespace {

using Block = std::array<unsigned char, 8>;

Block from_hex(const char* hex) {
  Block b{};
  for (size_t i = 0; i < 8; ++i) {
    b[i] = static_cast<unsigned char>(std::stoul(std::string(hex + 2 * i, 2), nullptr, 16));
  }
  return b;
}

std::string to_hex(const Block& b) {
  static const char digits[] = "0123456789ABCDEF";
  std::string s;
  for (unsigned char c : b) {
    s += digits[c >> 4];
    s += digits[c & 15];
  }
  return s;
}

Block encrypt(const Block& key, Block block) {
  oruDESKeySchedule ks;
  oruDESKeySetup(key.data(), &ks);
  oruDESBlockCipherECB(&ks, block.data(), 0);
  return block;
}

Block decrypt(const Block& key, Block block) {
  oruDESKeySchedule ks;
  oruDESKeySetup(key.data(), &ks);
  oruDESBlockCipherECB(&ks, block.data(), 1);
  return block;
}

struct Vector {
  const char* key;
  const char* plaintext;
  const char* ciphertext;
};

// Variable plaintext: key 0101010101010101, plaintext with bit i set.
constexpr const char* kVariablePlaintext[64] = {
    "95F8A5E5DD31D900", "DD7F121CA5015619", "2E8653104F3834EA", "4BD388FF6CD81D4F",
    "20B9E767B2FB1456", "55579380D77138EF", "6CC5DEFAAF04512F", "0D9F279BA5D87260",
    "D9031B0271BD5A0A", "424250B37C3DD951", "B8061B7ECD9A21E5", "F15D0F286B65BD28",
    "ADD0CC8D6E5DEBA1", "E6D5F82752AD63D1", "ECBFE3BD3F591A5E", "F356834379D165CD",
    "2B9F982F20037FA9", "889DE068A16F0BE6", "E19E275D846A1298", "329A8ED523D71AEC",
    "E7FCE22557D23C97", "12A9F5817FF2D65D", "A484C3AD38DC9C19", "FBE00A8A1EF8AD72",
    "750D079407521363", "64FEED9C724C2FAF", "F02B263B328E2B60", "9D64555A9A10B852",
    "D106FF0BED5255D7", "E1652C6B138C64A5", "E428581186EC8F46", "AEB5F5EDE22D1A36",
    "E943D7568AEC0C5C", "DF98C8276F54B04B", "B160E4680F6C696F", "FA0752B07D9C4AB8",
    "CA3A2B036DBC8502", "5E0905517BB59BCF", "814EEB3B91D90726", "4D49DB1532919C9F",
    "25EB5FC3F8CF0621", "AB6A20C0620D1C6F", "79E90DBC98F92CCA", "866ECEDD8072BB0E",
    "8B54536F2F3E64A8", "EA51D3975595B86B", "CAFFC6AC4542DE31", "8DD45A2DDF90796C",
    "1029D55E880EC2D0", "5D86CB23639DBEA9", "1D1CA853AE7C0C5F", "CE332329248F3228",
    "8405D1ABE24FB942", "E643D78090CA4207", "48221B9937748A23", "DD7C0BBD61FAFD54",
    "2FBC291A570DB5C4", "E07C30D7E4E26E12", "0953E2258E8E90A1", "5B711BC4CEEBF2EE",
    "CC083F1E6D9E85F6", "D2FD8867D50D2DFE", "06E7EA22CE92708F", "166B40B44ABA4BD6",
};

// Variable key: plaintext 0, a key with one non-parity bit set.
constexpr Vector kVariableKey[56] = {
    {"8001010101010101", "0000000000000000", "95A8D72813DAA94D"},
    {"4001010101010101", "0000000000000000", "0EEC1487DD8C26D5"},
    {"2001010101010101", "0000000000000000", "7AD16FFB79C45926"},
    {"1001010101010101", "0000000000000000", "D3746294CA6A6CF3"},
    {"0801010101010101", "0000000000000000", "809F5F873C1FD761"},
    {"0401010101010101", "0000000000000000", "C02FAFFEC989D1FC"},
    {"0201010101010101", "0000000000000000", "4615AA1D33E72F10"},
    {"0180010101010101", "0000000000000000", "2055123350C00858"},
    {"0140010101010101", "0000000000000000", "DF3B99D6577397C8"},
    {"0120010101010101", "0000000000000000", "31FE17369B5288C9"},
    {"0110010101010101", "0000000000000000", "DFDD3CC64DAE1642"},
    {"0108010101010101", "0000000000000000", "178C83CE2B399D94"},
    {"0104010101010101", "0000000000000000", "50F636324A9B7F80"},
    {"0102010101010101", "0000000000000000", "A8468EE3BC18F06D"},
    {"0101800101010101", "0000000000000000", "A2DC9E92FD3CDE92"},
    {"0101400101010101", "0000000000000000", "CAC09F797D031287"},
    {"0101200101010101", "0000000000000000", "90BA680B22AEB525"},
    {"0101100101010101", "0000000000000000", "CE7A24F350E280B6"},
    {"0101080101010101", "0000000000000000", "882BFF0AA01A0B87"},
    {"0101040101010101", "0000000000000000", "25610288924511C2"},
    {"0101020101010101", "0000000000000000", "C71516C29C75D170"},
    {"0101018001010101", "0000000000000000", "5199C29A52C9F059"},
    {"0101014001010101", "0000000000000000", "C22F0A294A71F29F"},
    {"0101012001010101", "0000000000000000", "EE371483714C02EA"},
    {"0101011001010101", "0000000000000000", "A81FBD448F9E522F"},
    {"0101010801010101", "0000000000000000", "4F644C92E192DFED"},
    {"0101010401010101", "0000000000000000", "1AFA9A66A6DF92AE"},
    {"0101010201010101", "0000000000000000", "B3C1CC715CB879D8"},
    {"0101010180010101", "0000000000000000", "19D032E64AB0BD8B"},
    {"0101010140010101", "0000000000000000", "3CFAA7A7DC8720DC"},
    {"0101010120010101", "0000000000000000", "B7265F7F447AC6F3"},
    {"0101010110010101", "0000000000000000", "9DB73B3C0D163F54"},
    {"0101010108010101", "0000000000000000", "8181B65BABF4A975"},
    {"0101010104010101", "0000000000000000", "93C9B64042EAA240"},
    {"0101010102010101", "0000000000000000", "5570530829705592"},
    {"0101010101800101", "0000000000000000", "8638809E878787A0"},
    {"0101010101400101", "0000000000000000", "41B9A79AF79AC208"},
    {"0101010101200101", "0000000000000000", "7A9BE42F2009A892"},
    {"0101010101100101", "0000000000000000", "29038D56BA6D2745"},
    {"0101010101080101", "0000000000000000", "5495C6ABF1E5DF51"},
    {"0101010101040101", "0000000000000000", "AE13DBD561488933"},
    {"0101010101020101", "0000000000000000", "024D1FFA8904E389"},
    {"0101010101018001", "0000000000000000", "D1399712F99BF02E"},
    {"0101010101014001", "0000000000000000", "14C1D7C1CFFEC79E"},
    {"0101010101012001", "0000000000000000", "1DE5279DAE3BED6F"},
    {"0101010101011001", "0000000000000000", "E941A33F85501303"},
    {"0101010101010801", "0000000000000000", "DA99DBBC9A03F379"},
    {"0101010101010401", "0000000000000000", "B7FC92F91D8E92E9"},
    {"0101010101010201", "0000000000000000", "AE8E5CAA3CA04E85"},
    {"0101010101010180", "0000000000000000", "9CC62DF43B6EED74"},
    {"0101010101010140", "0000000000000000", "D863DBB5C59A91A0"},
    {"0101010101010120", "0000000000000000", "A1AB2190545B91D7"},
    {"0101010101010110", "0000000000000000", "0875041E64C570F7"},
    {"0101010101010108", "0000000000000000", "5A594528BEBEF1CC"},
    {"0101010101010104", "0000000000000000", "FCDB3291DE21F0C0"},
    {"0101010101010102", "0000000000000000", "869EFD7F9F265A09"},
};

constexpr Vector kPermutationOperation[32] = {
    {"1046913489980131", "0000000000000000", "88D55E54F54C97B4"},
    {"1007103489988020", "0000000000000000", "0C0CC00C83EA48FD"},
    {"10071034C8980120", "0000000000000000", "83BC8EF3A6570183"},
    {"1046103489988020", "0000000000000000", "DF725DCAD94EA2E9"},
    {"1086911519190101", "0000000000000000", "E652B53B550BE8B0"},
    {"1086911519580101", "0000000000000000", "AF527120C485CBB0"},
    {"5107B01519580101", "0000000000000000", "0F04CE393DB926D5"},
    {"1007B01519190101", "0000000000000000", "C9F00FFC74079067"},
    {"3107915498080101", "0000000000000000", "7CFD82A593252B4E"},
    {"3107919498080101", "0000000000000000", "CB49A2F9E91363E3"},
    {"10079115B9080140", "0000000000000000", "00B588BE70D23F56"},
    {"3107911598090140", "0000000000000000", "406A9A6AB43399AE"},
    {"1007D01589980101", "0000000000000000", "6CB773611DCA9ADA"},
    {"9107911589980101", "0000000000000000", "67FD21C17DBB5D70"},
    {"9107D01589190101", "0000000000000000", "9592CB4110430787"},
    {"1007D01598980120", "0000000000000000", "A6B7FF68A318DDD3"},
    {"1007940498190101", "0000000000000000", "4D102196C914CA16"},
    {"0107910491190401", "0000000000000000", "2DFA9F4573594965"},
    {"0107910491190101", "0000000000000000", "B46604816C0E0774"},
    {"0107940491190401", "0000000000000000", "6E7E6221A4F34E87"},
    {"19079210981A0101", "0000000000000000", "AA85E74643233199"},
    {"1007911998190801", "0000000000000000", "2E5A19DB4D1962D6"},
    {"10079119981A0801", "0000000000000000", "23A866A809D30894"},
    {"1007921098190101", "0000000000000000", "D812D961F017D320"},
    {"100791159819010B", "0000000000000000", "055605816E58608F"},
    {"1004801598190101", "0000000000000000", "ABD88E8B1B7716F1"},
    {"1004801598190102", "0000000000000000", "537AC95BE69DA1E1"},
    {"1004801598190108", "0000000000000000", "AED0F6AE3C25CDD8"},
    {"1002911598100104", "0000000000000000", "B3E35A5EE53E7B8D"},
    {"1002911598190104", "0000000000000000", "61C79C71921A2EF8"},
    {"1002911598100201", "0000000000000000", "E2F5728F0995013C"},
    {"1002911698100101", "0000000000000000", "1AEAC39A61F0A464"},
};

constexpr Vector kSubstitutionTable[19] = {
    {"7CA110454A1A6E57", "01A1D6D039776742", "690F5B0D9A26939B"},
    {"0131D9619DC1376E", "5CD54CA83DEF57DA", "7A389D10354BD271"},
    {"07A1133E4A0B2686", "0248D43806F67172", "868EBB51CAB4599A"},
    {"3849674C2602319E", "51454B582DDF440A", "7178876E01F19B2A"},
    {"04B915BA43FEB5B6", "42FD443059577FA2", "AF37FB421F8C4095"},
    {"0113B970FD34F2CE", "059B5E0851CF143A", "86A560F10EC6D85B"},
    {"0170F175468FB5E6", "0756D8E0774761D2", "0CD3DA020021DC09"},
    {"43297FAD38E373FE", "762514B829BF486A", "EA676B2CB7DB2B7A"},
    {"07A7137045DA2A16", "3BDD119049372802", "DFD64A815CAF1A0F"},
    {"04689104C2FD3B2F", "26955F6835AF609A", "5C513C9C4886C088"},
    {"37D06BB516CB7546", "164D5E404F275232", "0A2AEEAE3FF4AB77"},
    {"1F08260D1AC2465E", "6B056E18759F5CCA", "EF1BF03E5DFA575A"},
    {"584023641ABA6176", "004BD6EF09176062", "88BF0DB6D70DEE56"},
    {"025816164629B007", "480D39006EE762F2", "A1F9915541020B56"},
    {"49793EBC79B3258F", "437540C8698F3CFA", "6FBF1CAFCFFD0556"},
    {"4FB05E1515AB73A7", "072D43A077075292", "2F22E49BAB7CA1AC"},
    {"49E95D6D4CA229BF", "02FE55778117F12A", "5A6B612CC26CCE4A"},
    {"018310DC409B26D6", "1D9D5C5018F728C2", "5F4C038ED12B2E41"},
    {"1C587F1C13924FEF", "305532286D6F295A", "63FAC0D034D9F793"},
};
// Checks one known answer in both directions.
void expect_known_answer(const Vector& v) {
  SCOPED_TRACE(std::string("key ") + v.key + " plaintext " + v.plaintext);
  const Block key = from_hex(v.key);
  EXPECT_EQ(to_hex(encrypt(key, from_hex(v.plaintext))), v.ciphertext);
  EXPECT_EQ(to_hex(decrypt(key, from_hex(v.ciphertext))), v.plaintext);
}

uint64_t as_integer(const Block& b) {
  uint64_t v = 0;
  for (unsigned char c : b) v = (v << 8) | c;
  return v;
}

TEST(DesKnownAnswer, VariablePlaintext) {
  for (int i = 0; i < 64; ++i) {
    Block plain{};
    plain[static_cast<size_t>(i / 8)] = static_cast<unsigned char>(0x80u >> (i % 8));
    const std::string p = to_hex(plain);
    expect_known_answer({"0101010101010101", p.c_str(), kVariablePlaintext[i]});
  }
}

TEST(DesKnownAnswer, VariableKey) {
  // The table's keys must walk through the 56 key bits one at a time, in
  // order (parity bits aside): a guard against a mistyped row.
  uint64_t expected_bit = 1ull << 63;
  for (const Vector& v : kVariableKey) {
    const uint64_t bit = as_integer(from_hex(v.key)) & 0xFEFEFEFEFEFEFEFEull;
    ASSERT_EQ(bit, expected_bit) << v.key;
    expected_bit >>= (expected_bit & 0x0202020202020202ull) ? 2 : 1;
    expect_known_answer(v);
  }
}

TEST(DesKnownAnswer, PermutationOperation) {
  for (const Vector& v : kPermutationOperation) expect_known_answer(v);
}

TEST(DesKnownAnswer, SubstitutionTable) {
  for (const Vector& v : kSubstitutionTable) expect_known_answer(v);
}

TEST(DesKnownAnswer, ClassicExamples) {
  expect_known_answer({"133457799BBCDFF1", "0123456789ABCDEF", "85E813540F0AB405"});
  // "Now is t" under 0123456789ABCDEF.
  expect_known_answer({"0123456789ABCDEF", "4E6F772069732074", "3FA40E8A984D4815"});
  expect_known_answer({"0000000000000000", "0000000000000000", "8CA64DE9C1B123A7"});
  expect_known_answer({"FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF", "7359B2163E4EDC58"});
  expect_known_answer({"FEDCBA9876543210", "0123456789ABCDEF", "ED39D950FA74BCC4"});
}

TEST(DesSchedule, ParityBitsAreIgnored) {
  std::mt19937_64 rng(7);
  for (int trial = 0; trial < 64; ++trial) {
    Block key{};
    uint64_t r = rng();
    std::memcpy(key.data(), &r, 8);
    Block flipped = key;
    uint64_t parity = rng();
    for (size_t i = 0; i < 8; ++i) flipped[i] ^= static_cast<unsigned char>((parity >> i) & 1u);
    oruDESKeySchedule a, b;
    std::memset(&a, 0xAA, sizeof a);
    std::memset(&b, 0x55, sizeof b);
    oruDESKeySetup(key.data(), &a);
    oruDESKeySetup(flipped.data(), &b);
    EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0);
  }
}

TEST(DesSchedule, HoldsSixBitGroupsInRoundOrder) {
  // Key 133457799BBCDFF1: the first and last round subkeys as 48-bit
  // values are 1B02EFFC7072 and CB3D8B0E17F5.
  const Block key = from_hex("133457799BBCDFF1");
  oruDESKeySchedule ks;
  std::memset(&ks, 0xFF, sizeof ks);
  oruDESKeySetup(key.data(), &ks);
  auto subkey = [&](int round) {
    uint64_t v = 0;
    for (int g = 0; g < 8; ++g) {
      EXPECT_LT(ks.subkeys[8 * round + g], 64);
      v = (v << 6) | ks.subkeys[8 * round + g];
    }
    return v;
  };
  EXPECT_EQ(subkey(0), 0x1B02EFFC7072ull);
  EXPECT_EQ(subkey(15), 0xCB3D8B0E17F5ull);
}

TEST(DesCipher, DecryptUndoesEncrypt) {
  std::mt19937_64 rng(11);
  for (int trial = 0; trial < 200; ++trial) {
    Block key{}, plain{};
    uint64_t k = rng(), p = rng();
    std::memcpy(key.data(), &k, 8);
    std::memcpy(plain.data(), &p, 8);
    Block cipher = encrypt(key, plain);
    EXPECT_NE(cipher, plain);
    EXPECT_EQ(decrypt(key, cipher), plain);
  }
}

TEST(DesCipher, ComplementationProperty) {
  // E(~k, ~p) == ~E(k, p): a structural property of DES that a wrong
  // expansion or key schedule would break.
  std::mt19937_64 rng(13);
  for (int trial = 0; trial < 50; ++trial) {
    Block key{}, plain{};
    uint64_t k = rng(), p = rng();
    std::memcpy(key.data(), &k, 8);
    std::memcpy(plain.data(), &p, 8);
    Block nkey = key, nplain = plain;
    for (auto& c : nkey) c = static_cast<unsigned char>(~c);
    for (auto& c : nplain) c = static_cast<unsigned char>(~c);
    Block c1 = encrypt(key, plain), c2 = encrypt(nkey, nplain);
    for (auto& c : c2) c = static_cast<unsigned char>(~c);
    EXPECT_EQ(c1, c2);
  }
}

TEST(DesCipher, NullArgumentsAreIgnored) {
  Block key = from_hex("133457799BBCDFF1"), block = from_hex("0123456789ABCDEF");
  oruDESKeySchedule ks;
  oruDESKeySetup(nullptr, &ks);
  oruDESKeySetup(key.data(), nullptr);
  oruDESKeySetup3(nullptr, &ks, &ks, &ks);
  oruDESKeySetup3(key.data(), &ks, nullptr, &ks);
  oruDESKeySetup(key.data(), &ks);
  oruDESBlockCipherECB(nullptr, block.data(), 0);
  oruDESBlockCipherECB(&ks, nullptr, 0);
  oruDESBlockCipherECB3(&ks, nullptr, &ks, block.data(), 0);
  oruDESBlockCipherECB3(&ks, &ks, &ks, nullptr, 1);
  EXPECT_EQ(to_hex(block), "0123456789ABCDEF");
}

TEST(DesCipher, CorruptScheduleStaysInBounds) {
  // Bytes above 63 cannot come from key setup; they must still not make
  // the cipher read outside its tables.
  oruDESKeySchedule ks;
  std::memset(&ks, 0xFF, sizeof ks);
  Block block = from_hex("0123456789ABCDEF");
  oruDESBlockCipherECB(&ks, block.data(), 0);
  oruDESBlockCipherECB(&ks, block.data(), 1);
  EXPECT_EQ(to_hex(block), "0123456789ABCDEF");
}

// Three keys one after another, as oruDESKeySetup3 takes them.
std::array<unsigned char, 24> three_keys(const char* k1, const char* k2, const char* k3) {
  std::array<unsigned char, 24> keys{};
  Block a = from_hex(k1), b = from_hex(k2), c = from_hex(k3);
  std::memcpy(keys.data(), a.data(), 8);
  std::memcpy(keys.data() + 8, b.data(), 8);
  std::memcpy(keys.data() + 16, c.data(), 8);
  return keys;
}

TEST(TripleDes, ThreeKeyExample) {
  // Three keys, "The qufck brown fox jump" in three blocks.
  auto keys = three_keys("0123456789ABCDEF", "23456789ABCDEF01", "456789ABCDEF0123");
  oruDESKeySchedule s1, s2, s3;
  oruDESKeySetup3(keys.data(), &s1, &s2, &s3);
  const char* plain[] = {"5468652071756663", "6B2062726F776E20", "666F78206A756D70"};
  const char* cipher[] = {"A826FD8CE53B855F", "CCE21C8112256FE6", "68D5C05DD9B6B900"};
  for (int i = 0; i < 3; ++i) {
    Block b = from_hex(plain[i]);
    oruDESBlockCipherECB3(&s1, &s2, &s3, b.data(), 0);
    EXPECT_EQ(to_hex(b), cipher[i]);
    oruDESBlockCipherECB3(&s1, &s2, &s3, b.data(), 7);
    EXPECT_EQ(to_hex(b), plain[i]);
  }
}

TEST(TripleDes, EqualKeysAreSingleDes) {
  // With k1 = k2 = k3 the middle decryption cancels the first encryption,
  // so the published single-DES answers hold for the triple form too.
  for (const Vector& v : kSubstitutionTable) {
    auto keys = three_keys(v.key, v.key, v.key);
    oruDESKeySchedule s1, s2, s3;
    oruDESKeySetup3(keys.data(), &s1, &s2, &s3);
    Block b = from_hex(v.plaintext);
    oruDESBlockCipherECB3(&s1, &s2, &s3, b.data(), 0);
    EXPECT_EQ(to_hex(b), v.ciphertext) << v.key;
    oruDESBlockCipherECB3(&s1, &s2, &s3, b.data(), 1);
    EXPECT_EQ(to_hex(b), v.plaintext) << v.key;
  }
}

TEST(TripleDes, EqualsThreeSingleOperations) {
  std::mt19937_64 rng(17);
  for (int trial = 0; trial < 100; ++trial) {
    std::array<unsigned char, 24> keys{};
    for (int i = 0; i < 3; ++i) {
      uint64_t k = rng();
      std::memcpy(keys.data() + 8 * i, &k, 8);
    }
    Block plain{};
    uint64_t p = rng();
    std::memcpy(plain.data(), &p, 8);
    oruDESKeySchedule s1, s2, s3;
    oruDESKeySetup3(keys.data(), &s1, &s2, &s3);

    Block expected = plain;
    oruDESBlockCipherECB(&s1, expected.data(), 0);
    oruDESBlockCipherECB(&s2, expected.data(), 1);
    oruDESBlockCipherECB(&s3, expected.data(), 0);
    Block b = plain;
    oruDESBlockCipherECB3(&s1, &s2, &s3, b.data(), 0);
    EXPECT_EQ(b, expected);

    // Decryption is D(k1, E(k2, D(k3, block))).
    oruDESBlockCipherECB(&s3, expected.data(), 1);
    oruDESBlockCipherECB(&s2, expected.data(), 0);
    oruDESBlockCipherECB(&s1, expected.data(), 1);
    oruDESBlockCipherECB3(&s1, &s2, &s3, b.data(), 1);
    EXPECT_EQ(b, expected);
    EXPECT_EQ(b, plain);
  }
}

}  // namespace
