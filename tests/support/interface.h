// The exported interface: contexts and binary strings that release themselves, and the text getters.
#pragma once

#include "vrno.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace test {

class Context {
public:
    Context() { EXPECT_EQ(VRNO_API_Init(&m_context, "/"), 0); }
    ~Context() { VRNO_API_Finish(&m_context); }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    operator VRNO_API_CTX*() const { return m_context; }

    // The text of the last failure in UTF-8; "none" when there is none.
    std::string error() const;
    int load(const std::string& certificate);

private:
    VRNO_API_CTX* m_context = nullptr;
};

class BinStr {
public:
    BinStr() { VRNO_BINSTR_Create(&m_record); }
    explicit BinStr(const std::string& data) : BinStr()
    {
        VRNO_BINSTR_SetData(reinterpret_cast<const unsigned char*>(data.data()), static_cast<unsigned>(data.size()), &m_record);
    }
    ~BinStr() { VRNO_BINSTR_Delete(&m_record); }
    BinStr(const BinStr&) = delete;
    BinStr& operator=(const BinStr&) = delete;
    operator VRNO_BINSTR*() { return &m_record; }
    std::string data() const { return {reinterpret_cast<const char*>(m_record.pData), m_record.nLen}; }
    bool isEmpty() const { return m_record.pData == nullptr && m_record.nLen == 0; }

private:
    VRNO_BINSTR m_record;
};

// All text getters, by name.
using TextGetter = int (*)(VRNO_API_CTX*, int, char*);
struct NamedGetter {
    const char* name;
    const char* output; // the argument's name
    TextGetter get;
    const char* extension = nullptr;  // the octets of its identifier, in notation
    int slack = 0;                    // room that the buffer needs beyond the text
    const char* nullOutput = nullptr; // the name in the message of a null pointer, where it is another one
};
extern const std::vector<NamedGetter> textGetters;

// The text of a getter, whatever its length; the code in `code`.
std::string getText(VRNO_API_CTX* context, TextGetter get, int& code);
// The text of a getter that succeeds.
std::string field(const Context& context, TextGetter get);

} // namespace test
