// Export marker of the framework core. Classes that cross module borders carry it, so that their
// type information and virtual tables are one symbol for all modules.
#pragma once

#define ORLIXDATAPROCESSINGCORE_API __attribute__((visibility("default")))
