// What the renderers of extensions have in common.
#pragma once

#include "base/Objects.h"
#include "base/TextBuilder.h"

#include <span>

namespace vrno {

// Turns the value of an extension into its text: 0, or a positive code with the reason in `trail`.
using Renderer = int (*)(ByteString& value, ByteString& text, Trail& trail);

// The name that is shown for an identifier, which is in the text form with blanks.
struct OidName {
    const char* oid;
    const char* name;
};

// Null if the identifier is not in the table.
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

// The name of a bit in the first two octets of a BIT STRING; the first octet is the high one.
struct BitName {
    int bit;
    const char* text;
};

// Adds the text of each bit that is set.
inline void addBits(int high, int low, std::span<const BitName> table, TextBuilder& out)
{
    for (const BitName& known : table) {
        if (((high << 8 | low) & known.bit) != 0) out << known.text;
    }
}

// Moves the trail of `object` to `trail` and returns `code`.
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

// The last step of a renderer: stores the text; 1 on allocation failure.
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
