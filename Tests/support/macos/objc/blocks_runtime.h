#pragma once

// Foundation of GNUstep asks for it under this name when the compiler knows blocks.
#include <Block.h>
