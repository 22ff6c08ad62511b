// The subcommands of vsps: each adds itself to the command line, with its options, help and action.
#pragma once

#include "console/options.h"

void addEcho(CommandLine& vsps);
void addInfo(CommandLine& vsps);
void addLevel(CommandLine& vsps);
void addPitch(CommandLine& vsps);
void addSimulateEcho(CommandLine& vsps);
void addTone(CommandLine& vsps);
void addVad(CommandLine& vsps);
