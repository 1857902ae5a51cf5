// The records: every check of every record, and what each one encodes to.
#include "ASN1Pkix/records/RAttribute.h"
#include "ASN1Pkix/records/RCertificate.h"
#include "ASN1Pkix/records/RCms.h"
#include "ASN1Pkix/records/RExtensions.h"
#include "ASN1Pkix/records/RForeignRecipients.h"
#include "ASN1Pkix/records/RKeys.h"
#include "ASN1Pkix/records/RPbe.h"
#include "ASN1Pkix/records/RPolicies.h"
#include "ASN1Pkix/records/RPrivateKeyInfo.h"
#include "ASN1Pkix/records/UDNSettings.h"
#include "support/bytes.h"
#include "support/cases.h"

#include <gtest/gtest.h>

using namespace vrno;
using namespace test;

namespace {

struct Outcome {
    int code;
    std::string trail, encoded;
    int mask = -1;
};

using Decode = Outcome (*)(ByteString&);
template <class Record> Outcome decoded(ByteString& data)
{
    Record record;
    Outcome outcome{record.fromASN1Object(data), trail(record), ""};
    if constexpr (requires { record.m_ucBitMask; }) outcome.mask = static_cast<int>(record.m_ucBitMask);
    if constexpr (requires { record.toASN1Object(); }) outcome.encoded = bytes(record.toASN1Object());
    return outcome;
}
template <class... Record> std::map<std::string, Decode> decoders(const char* names)
{
    return byName<Decode>(names, {decoded<Record>...});
}
#define RECORDS(...) decoders<__VA_ARGS__>(#__VA_ARGS__)

} // namespace

TEST(Records, DecodeAndEncodeAsTheTableSays)
{
    const std::map<std::string, Decode> records = RECORDS(
        RAlgorithmIdentifier, RTime, RValidity, RSubjectPublicKeyInfo, RExtension, RExtensions, RRDNSequence,
        RRelativeDistinguishedName, RGeneralNames, RTBSCertificate, RCertificate, RAttributeTypeAndValue, RGeneralName,
        RAnotherName, RVID, RIdentifyData, RPrivateKeyInfo, REncryptedPrivateKeyInfo, RPBEParameter, RPBES2_params, RPBKDF2_params,
        RRSAPrivateKey, RRSAPublicKey, RKCDSAParameters, RAttribute, RAttributes, RIssuerAndSerialNumber, RRecipientIdentifier,
        RKeyTransRecipientInfo, RRecipientInfo, RRecipientInfos, ROriginatorInfo, RCertificateSet, RCertificateRevocationLists,
        REncryptedContentInfo, RKeyAgreeRecipientInfo, RKEKRecipientInfo, ROriginatorIdentifierOrKey, ROriginatorPublicKey,
        RRecipientEncryptedKeys, RKEKIdentifier, ROtherKeyAttribute, RBasicConstraints, RCertificatePolicies, RPolicyInformation,
        RPolicyQualifierInfo, RUserNotice, RDisplayText, RNoticeReference, RExtKeyUsageSyntax, RAuthorityKeyIdentifier,
        RCRLDistPointsSyntax, RDistributionPoint, RDistributionPointName, RAuthorityInfoAccessSyntax, RAccessDescription);
    for (const Case& c : cases("records.txt", 5)) {
        SCOPED_TRACE(c.where);
        const std::string input = der(c[1]);
        ByteString data = byteString(input);
        const Outcome outcome = records.at(c[0])(data);
        EXPECT_EQ(outcome.code, std::stoi(c[2])) << outcome.trail;
        if (outcome.code > 0) {
            EXPECT_EQ(outermost(outcome.trail), c[0] + "::fromASN1Object-" + c[3] + "(" + c[2] + ")");
            EXPECT_EQ(innermost(outcome.trail), c[4]);
        } else if (c[4].starts_with("mask ")) {
            EXPECT_EQ(outcome.mask, std::stoi(c[4].substr(5)));
        } else if (!c[4].empty()) {
            EXPECT_EQ(hex(outcome.encoded), hex(c[4] == "=" ? input : der(c[4])));
        }
        for (std::size_t length = 0; length < input.size() && outcome.code == 0; ++length) {
            ByteString cut = byteString(input.substr(0, length));
            EXPECT_GT(records.at(c[0])(cut).code, 0) << length;
        }
    }
}

TEST(Records, TBSCertificateKnowsItsOptionalParts)
{
    const std::string name = "30{31{30{06{550406} 13{\"KR\"}}}}", utc = "17{\"0401011200Z\"}";
    const std::string six = "0203FFC302 30{06{2A03}}" + name + "30{" + utc + utc + "}" + name + "30{30{06{2A03}} 030100}";
    RTBSCertificate tbs;
    ByteString full = byteString(der("30{A0{020102}" + six + "A3{30{30{06{2A03} 0401AA}}}}")),
               bare = byteString(der("30{" + six + "}"));
    ASSERT_EQ(tbs.fromASN1Object(full), 0);
    EXPECT_EQ(tbs.m_ucBitMask, 0x09);
    EXPECT_EQ(tbs.getVersion(), 2);
    EXPECT_EQ(hex(bytes(tbs.getSerialNumber(false))) + hex(bytes(tbs.getSerialNumber(true))), "c302ffc302");
    EXPECT_EQ(hex(bytes(tbs.getExtensions().get(0))), "300706022a030401aa");
    EXPECT_EQ(bytes(tbs.getExtensions().get(1)), "");
    EXPECT_EQ(tbs.getExtensions().getLastError(), 1);
    EXPECT_EQ(outermost(trail(tbs.getExtensions())), "RExtensions::get-m_SEQ(1)");
    ASSERT_EQ(tbs.fromASN1Object(bare), 0); // over the first one
    EXPECT_EQ(tbs.m_ucBitMask, 0);
    EXPECT_EQ(tbs.getVersion(), 0);
}

TEST(Records, ADecodedExtensionIsCriticalOnlyWhereItSaysSo)
{
    RExtension extension;
    ByteString critical = byteString(der("30{06{2A03} 0101FF 0400}")), plain = byteString(der("30{06{2A03} 0400}"));
    ASSERT_EQ(extension.fromASN1Object(critical), 0);
    EXPECT_TRUE(extension.m_critical.getBoolValue());
    ASSERT_EQ(extension.fromASN1Object(plain), 0); // over the first one
    EXPECT_FALSE(extension.m_critical.getBoolValue());
}

TEST(Records, GettersTellWhatTheyCouldNotRead)
{
    RAlgorithmIdentifier algorithm;
    EXPECT_EQ(bytes(algorithm.getAlgorithm()), "");
    EXPECT_EQ(algorithm.getLastError(), 1);
    EXPECT_EQ(outermost(trail(algorithm)), "RAlgorithmIdentifier::getAlgorithm-m_algorithm(1)");
    EXPECT_EQ(algorithm.setAlgorithm("1", true), 1);
    EXPECT_EQ(outermost(trail(algorithm)), "RAlgorithmIdentifier::setAlgorithm-m_algorithm(1)");
    EXPECT_EQ(algorithm.setAlgorithm("1 2 3", true), 0);
    ByteString null = byteString(der("0500"));
    algorithm.setParameters(null);
    EXPECT_EQ(hex(bytes(algorithm.toASN1Object())), "300606022a030500");
    algorithm.setAlgorithm("1 2 4", true);
    EXPECT_EQ(hex(bytes(algorithm.toASN1Object())), "300406022a04");

    RSubjectPublicKeyInfo key;
    EXPECT_EQ(bytes(key.toASN1Object()), std::string("\x30\x06\x30\x02\x06\x00\x03\x00", 8));
    EXPECT_EQ(bytes(key.getSubjectPublicKey()), "");
    EXPECT_EQ(outermost(trail(key)), "RSubjectPublicKeyInfo::getSubjectPublicKey-m_subjectPublicKey(1)");

    RTime time;
    EXPECT_EQ(bytes(time.toASN1Object()), "");
    EXPECT_EQ(time.getLastError(), 3);
    RValidity validity;
    EXPECT_EQ(bytes(validity.toASN1Object()), "");
    EXPECT_EQ(validity.getLastError(), 1);
    EXPECT_EQ(outermost(trail(validity)), "RValidity::toASN1Object-m_notBefore(1)");
    EXPECT_EQ(innermost(trail(validity)), "Any component is not chosen.");
}

TEST(Records, ChoicesAndDefaultsOfAKeyDerivation)
{
    RPBKDF2_params params;
    EXPECT_EQ(bytes(params.toASN1Object()), "");
    EXPECT_EQ(placeless(trail(params)), "RPBKDF2_params::toASN1Object-m_ucBitMask(3),Any component does not chosen.");
    ByteString other = byteString(der("30{30{06{2A03}} 020105}")), salt = byteString("salt");
    ASSERT_EQ(params.fromASN1Object(other), 0);
    EXPECT_EQ(params.getBitMask(), RPBKDF2_params::otherSource);
    EXPECT_EQ(bytes(params.getPrf().getAlgorithm()), "1 2 840 113549 2 7");
    EXPECT_EQ(hex(bytes(params.getPrf().getParameters())), "0500");
    params.setSpecified(salt);
    params.setKeyLength(16);
    EXPECT_EQ(hex(bytes(params.toASN1Object())), hex(der("30{04{\"salt\"} 020105 020110}")));
}

TEST(Records, FlatKeysOfKcdsa)
{
    ByteString domain = byteString(der("30{020103 020105 020107}")), four = byteString(der("30{020103 020105 020107 020109}")),
               x = byteString(der("020111")), y = byteString(der("020113")), bad = byteString(der("0401AA"));
    RDSAPublicKey key;
    EXPECT_EQ(key.setParam(four), 2);
    EXPECT_EQ(placeless(trail(key)), "RDSAPublicKey::setParam-asnSeq(2),The number of components is not 3.");
    EXPECT_EQ(key.setParam(domain), 0);
    EXPECT_EQ(key.setKey(bad), 1);
    EXPECT_EQ(key.setKey(y), 0);
    EXPECT_EQ(hex(bytes(key.toASN1Object())), hex(der("30{020103 020105 020107 020113}")));
    RDSAPrivateKey secret;
    EXPECT_EQ(secret.setKey(x, bad), 2);
    EXPECT_EQ(secret.setParam(four), 0);
    EXPECT_EQ(secret.m_ucBitMask, 0);
    EXPECT_EQ(secret.setKey(x, y), 0);
    EXPECT_EQ(secret.setParam(four), 0);
    EXPECT_EQ(hex(bytes(secret.toASN1Object())), hex(der("30{020103 020105 020107 020111 020113}")));
    RKCDSAParameters parameters;
    ByteString negative = byteString(der("30{0281018F 020105 020107}"));
    ASSERT_EQ(parameters.fromASN1Object(negative), 0);
    EXPECT_EQ(bytes(parameters.getP()), "");
    EXPECT_EQ(placeless(trail(parameters)), "RKCDSAParameters::getOddPrime-m_p(1),OddPrime(P) is negative.");
}

// ---- names ----

TEST(Names, RenderAsTheTableSays)
{
    for (const Case& c : cases("names.txt", 3)) {
        SCOPED_TRACE(c.where);
        ByteString data = byteString(der(c[0])), text;
        RRDNSequence name;
        ASSERT_EQ(name.fromASN1Object(data), 0) << trail(name);
        EXPECT_EQ(UDNSettings::RDN2Str(name, text), std::stoi(c[1]));
        EXPECT_EQ(fromKsc(bytes(text)), c[2]);
    }
}

TEST(Names, GeneralNameInAWrapperOfItsOwn)
{
    RGeneralName name;
    name.setImplicitTag(1, 0x80);
    ByteString wrapped = byteString(der("A1{82{\"a\"}}")), empty = byteString(der("A100"));
    ASSERT_EQ(name.fromASN1Object(wrapped), 0);
    EXPECT_EQ(hex(bytes(name.getEncoded())), "820161");
    EXPECT_EQ(hex(bytes(name.toASN1Object())), "a103820161");
    EXPECT_EQ(name.fromASN1Object(empty), 2);
    EXPECT_EQ(bytes(name.toASN1Object()), "");
    EXPECT_EQ(innermost(trail(name)), "Any component does not chosen.");
}
