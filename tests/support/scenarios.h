// Every exported function that takes a context, with its successes and failures: the calls that the runners for missing memory,
// freed memory, the stack, threads, locales and failing systems all make.
#pragma once

#include "support/calls.h"
#include "support/folder.h"

#include <functional>

namespace test {

// What the words of all tables of calls stand for, and the card and the files that are named.
class World : public Values {
public:
    World();
    const Card& card() const { return m_card; }

private:
    void addPairs();

    Card m_card;
    Folder m_files;
};

// Runs `body` for each step of a session with a certificate that has every extension and one of a person, and for each row of the
// tables of calls, in a context where the calls before it were made. `values` has the last output of the session as "last".
using Body = std::function<void(VRNO_API_CTX* context, const Step& step, const Values& values)>;
void forEachScenario(const World& world, const Body& body);

} // namespace test
