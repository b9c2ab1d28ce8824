// The subcommands, one file a group.
#pragma once

#include "command.h"

namespace tool {

extern const Command infoCommand;
extern const Command diffCommand;
extern const Command averageCommand;

}  // namespace tool
