// Export marker of the package. Its few exported symbols are also listed in its linker script.
#pragma once

#define ORLIXVCELLPACKAGEBASE_API __attribute__((visibility("default")))
