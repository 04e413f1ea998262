#include "transforms/rowselection.h"
