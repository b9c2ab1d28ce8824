// The subcommands, one file a group.
#pragma once

#include "command.h"

namespace tool {

extern const Command infoCommand;
extern const Command diffCommand;
extern const Command averageCommand;
extern const Command statsCommand;
extern const Command compareCommand;
extern const Command blurCommand;
extern const Command filterCommand;
extern const Command laplacianCommand;
extern const Command lowpassCommand;
extern const Command gradientCommand;

}  // namespace tool
