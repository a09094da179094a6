// Export marker of the GenApi engine. Interfaces are cast dynamically by other modules, so their
// type information must be one symbol for all modules.
#pragma once

#define GENAPI_API __attribute__((visibility("default")))
