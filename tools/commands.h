// The commands: each adds itself, with its options and its words of help, to the description of the whole.
#pragma once

#include <CLI/CLI.hpp>

namespace tool {

void addCertificates(CLI::App& app);
void addSealing(CLI::App& app);
void addKeys(CLI::App& app);
void addCipher(CLI::App& app);
void addBase64(CLI::App& app);
void addCards(CLI::App& app);
void addExplain(CLI::App& app);

} // namespace tool
