// The exported functions by name, with their arguments in words: for tables of calls.
#pragma once

#include "support/interface.h"

#include <map>
#include <string>
#include <vector>

namespace test {

// What words in the arguments stand for.
using Values = std::map<std::string, std::string>;

struct Result {
    int code;
    std::string output; // of a call that gave 0: its outputs, one behind the other
    bool operator==(const Result&) const = default;
    friend void PrintTo(const Result& result, std::ostream* out) { *out << result.code << " \"" << result.output << '"'; }
};

// Makes one call, as in "VRNO_CRYPT_SetKeyAndIV 48 key iv": numbers, names out of `values` or the text itself, and for a
// pointer "null". An input record may also be "noData", "noLength" or "length:" and a number that it claims, an input text
// "empty", and both the notation that follows "der:" up to the end of the line; an output is "out".
// A text has as much room as the number in front of it says, or 20 bytes, behind which nothing must be written. A call that
// fails, but for memory, must leave its outputs as they were.
// "chain" makes the context's session cipher chain its messages; "put 0020.item key" puts an item on the card.
Result call(VRNO_API_CTX* context, const std::string& line, const Values& values = {});

// Makes calls with ";" between them, none of which may fail.
void makeAll(const Context& context, const std::string& lines, const Values& values);

// The text that VRNO_CERT_<name> gives; and of one that must not fail.
Result getText(VRNO_API_CTX* context, const std::string& name);
std::string field(const Context& context, const std::string& name);

// A user's session: good input for every function that takes a context, in an order in which each finds what it needs.
struct Step {
    std::string line;
    std::vector<int> failures; // codes that the function gives for other certificates, keys and passwords; 1002 beside them
    bool varies;               // the output is another one each time
};
// The steps with "certificate", "key" or "medium" for the group; all for none.
std::vector<Step> session(const std::string& group = "");
Values goodValues();
// Makes a step. An output that varies is told by its length.
Result make(const Step& step, VRNO_API_CTX* context, const Values& values);
// Makes steps on a context of their own, where "last" stands for the last output.
std::vector<Result> run(const std::vector<Step>& steps, Values values);

// Expects what the rows of a file say: call | calls before it, with ";" between them | code | message or output.
// An output may be named in `values`; a message that ends in "..." is the beginning of one.
void expectCalls(const char* file, const Values& values);

} // namespace test
