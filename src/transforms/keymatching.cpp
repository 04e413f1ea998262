#include "transforms/keymatching.h"
