#include "container/avi.h"
