// What the renderers of extensions share.
#pragma once

#include "base/Objects.h"
#include "base/TextBuilder.h"

#include <span>

namespace vrno {

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

// The last step of a renderer: hands the text over, or fails with noMemoryCode.
template <class Util> int finish(Util& util, const TextBuilder& built, ByteString& text, Here at = Here::now())
{
    return built.into(text) > 0 ? fail(util, noMemoryCode, "text", "Memory Allocation Error", at) : 0;
}

} // namespace vrno
