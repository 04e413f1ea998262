#include "transforms/dedupeengine.h"
