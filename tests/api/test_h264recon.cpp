#include "zanvc.h"
