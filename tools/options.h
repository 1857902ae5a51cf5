// Options that several commands have.
#pragma once

#include "files.h"
#include "terminal.h"

#include <CLI/CLI.hpp>

namespace tool {

// -o and --force.
void addOutput(CLI::App& command, Output& output);

// --password-file and --password-fd, or --pin-file and --pin-fd.
void addSecret(CLI::App& command, const std::string& name, SecretSource& source);

// IN, standard input without it.
void addInput(CLI::App& command, std::string& input, const char* name = "IN");

} // namespace tool
