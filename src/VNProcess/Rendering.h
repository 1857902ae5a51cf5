// What the renderers of extensions share.
#pragma once

#include "base/Objects.h"
#include "base/TextBuilder.h"

#include <span>

namespace vrno {

// Turns an extension's value into its text: 0, or above 0 with `trail` telling why not.
using Renderer = int (*)(ByteString& value, ByteString& text, Trail& trail);

// How an identifier, in the text form with blanks, is shown.
struct OidName {
    const char* oid;
    const char* name;
};

// Null for an identifier that the table does not name.
inline const char* nameOf(const ByteString& oid, std::span<const OidName> table)
{
    for (const OidName& known : table) {
        if (oid == known.oid) return known.name;
    }
    return nullptr;
}

// The name, or the identifier itself.
inline const char* nameOrOid(const ByteString& oid, std::span<const OidName> table)
{
    const char* const name = nameOf(oid, table);
    return name ? name : oid.getText();
}

// The bits of a BIT STRING by name, in their order: the first octet above, the second below.
struct BitName {
    int bit;
    const char* text;
};

// Adds the text of every bit that is set in the first two octets.
inline void addBits(int high, int low, std::span<const BitName> table, TextBuilder& out)
{
    for (const BitName& known : table) {
        if (((high << 8 | low) & known.bit) != 0) out << known.text;
    }
}

// The code of an object's failure, its trail handed on as it is.
inline int handOver(Trailed& object, int code, Trail& trail)
{
    trail.swap(object.m_bsErrorTrail);
    return code;
}

// The Renderer of a utility class.
template <class Util, int (Util::*parse)(ByteString& value, ByteString& text)>
int parsed(ByteString& value, ByteString& text, Trail& trail)
{
    Util util;
    return handOver(util, (util.*parse)(value, text), trail);
}

// The last step of a renderer: hands the text over; 1 on allocation failure.
inline int finish(const TextBuilder& built, ByteString& text, Trail& trail)
{
    if (built.into(text) == 0) return 0;
    trail.setOutOfMemory();
    return 1;
}

template <class Util> int finish(Util& util, const TextBuilder& built, ByteString& text, Here at = Here::now())
{
    return built.into(text) > 0 ? failMemory(util, 1, "text", memoryFailure, at) : 0;
}

} // namespace vrno
