#include "bench_util.h"
