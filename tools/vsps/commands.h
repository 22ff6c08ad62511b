// The subcommands of vsps: each adds itself to the command line, with its options, help and action.
#pragma once

#include <CLI/CLI.hpp>

void addEcho(CLI::App& app);
void addInfo(CLI::App& app);
void addLevel(CLI::App& app);
void addPitch(CLI::App& app);
void addSimulateEcho(CLI::App& app);
void addTone(CLI::App& app);
void addVad(CLI::App& app);
