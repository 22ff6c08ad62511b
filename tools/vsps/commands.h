// The subcommands of vsps: each adds itself to the command line, with its options, help and action.
#pragma once

#include "console/options.h"

void addCodecs(CommandLine& vsps);
void addDecode(CommandLine& vsps);
void addDenoise(CommandLine& vsps);
void addEcho(CommandLine& vsps);
void addEncode(CommandLine& vsps);
void addG168(CommandLine& vsps);
void addInfo(CommandLine& vsps);
void addLevel(CommandLine& vsps);
void addPitch(CommandLine& vsps);
void addSimulateEcho(CommandLine& vsps);
void addTone(CommandLine& vsps);
void addVad(CommandLine& vsps);
