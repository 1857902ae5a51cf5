// Every target over its corpus: inputs that reach what the fuzzer found, and all that once broke something.
#include "targets.h"

TEST(Corpus, HoldsNothingThatBreaksATarget)
{
    for (const fuzz::Target& target : fuzz::targets) {
        const std::vector<std::string> inputs = fuzz::corpus(target);
        EXPECT_FALSE(inputs.empty()) << target.name;
        for (const std::string& octets : inputs) {
            SCOPED_TRACE(target.name + (" " + test::hex(octets)));
            target.run(std::vector<unsigned char>(octets.begin(), octets.end())); // a block of its size
        }
    }
}
