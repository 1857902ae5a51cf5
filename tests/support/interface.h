// The exported interface: contexts and binary strings that release themselves.
#pragma once

#include "vrno.h"

#include <gtest/gtest.h>

#include <string>

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

} // namespace test
