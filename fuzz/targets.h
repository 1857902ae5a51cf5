// The fuzz targets. Each gets octets of a stranger and states with GoogleTest what must hold for any of them. fuzz/main.cpp runs
// one under libFuzzer, fuzz/corpus_test.cpp runs all over their corpora. A target keeps no state between two inputs.
#pragma once

#include "ASN1/ASN1Object.h"
#include "support/bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <vector>

namespace fuzz {

using vrno::ByteString;
using vrno::Octets;
using namespace test;

using Run = void(Octets input);
Run codec, values, sequence, identifier, base64, text;   // asn1.cpp
Run tbs, records, random_value, blobs;                   // records.cpp
Run certificate, envelope, protected_key, pair, storage; // interface.cpp

struct Target {
    const char* name;
    Run* run;
};
// clang-format off
inline constexpr Target targets[] = {
    {"codec", codec}, {"values", values}, {"sequence", sequence}, {"identifier", identifier}, {"base64", base64}, {"text", text},
    {"tbs", tbs}, {"records", records}, {"random_value", random_value}, {"blobs", blobs},
    {"certificate", certificate}, {"envelope", envelope}, {"protected_key", protected_key}, {"pair", pair}, {"storage", storage}};
// clang-format on

// The inputs of a target's corpus. scripts/fuzz --merge writes TARGET.txt; TARGET-found.txt has inputs that once broke something.
inline std::vector<std::string> corpus(const Target& target)
{
    std::vector<std::string> inputs;
    for (const char* const kind : {".txt", "-found.txt"}) {
        std::ifstream lines(CORPORA "/" + std::string(target.name) + kind);
        for (std::string line; std::getline(lines, line);) inputs.push_back(der(line));
    }
    return inputs;
}

// Takes the first octet, or a piece with its length in two octets before it. Where the input ends early, that is all there is.
inline unsigned takeOctet(Octets& input)
{
    if (input.empty()) return 0;
    const unsigned octet = input[0];
    input = input.subspan(1);
    return octet;
}
inline Octets takePiece(Octets& input)
{
    const unsigned high = takeOctet(input), wanted = high << 8 | takeOctet(input);
    const Octets piece = input.first(std::min<std::size_t>(wanted, input.size()));
    input = input.subspan(piece.size());
    return piece;
}
inline ByteString copy(Octets octets) { return {octets.data(), static_cast<int>(octets.size())}; }
inline std::string string(Octets octets) { return test::text(octets.data(), octets.size()); }

// What decodes and encodes decodes again, and then encodes as before; decoding leaves its input as it was. Two kinds of tags may
// encode as those of another element: an implicit one of a SEQUENCE, as [3] in the body of a certificate, and one in the form of
// high tag numbers with a low number. An input that may have one of them is decoded only.
inline bool isOddTag(unsigned char octet) { return octet >= 0x40 && ((octet & 0x1F) == 0x1F || (octet & 0x3F) == 3); }
template <class Record> void roundTrip(Octets input)
{
    ByteString data = copy(input);
    Record first, second;
    const int code = first.fromASN1Object(data);
    EXPECT_EQ(bytes(data), string(input));
    if (code > 0) return;
    const bool isValue = std::is_base_of_v<vrno::ASN1Object, Record>;
    if (!isValue && input[0] >= 0x40) return;
    if (std::any_of(input.begin(), isValue ? input.begin() + 1 : input.end(), isOddTag)) return;
    int unused = 0;
    ByteString octets;
    if constexpr (requires { first.getBitString(&unused); }) first.getBitString(&unused);
    if constexpr (requires { first.getBytes(octets, true); }) first.getBytes(octets, first.getIntValue() < 0);
    if constexpr (requires { first.toASN1Object(); }) {
        ByteString encoded = first.toASN1Object(), again = encoded;
        if (first.m_nLastError > 0 || encoded.getLength() == 0) return;
        EXPECT_EQ(second.fromASN1Object(again), 0) << bytes(second.getErrorTrail());
        EXPECT_EQ(bytes(second.toASN1Object()), bytes(encoded));
    }
}

// The same for the class that the first octet selects.
template <class... Record> void roundTripOfOne(Octets input)
{
    static constexpr void (*all[])(Octets) = {roundTrip<Record>...};
    const unsigned selected = takeOctet(input) % sizeof...(Record);
    all[selected](input);
}

} // namespace fuzz
