// The whole interface of the GenApi engine: from a description's text to a live map of nodes.
// Open nodemapfactory.h first, then inodemap.h and inode.h.
#pragma once

#include "gcbase/gcexception.h"
#include "genapi/chunkadapter.h"
#include "genapi/eventadapter.h"
#include "genapi/loadreport.h"
#include "genapi/memoryport.h"
#include "genapi/nodemapfactory.h"
#include "genapi/pointer.h"
#include "genapi/portimpl.h"
#include "genapi/synch.h"
