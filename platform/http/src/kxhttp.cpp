// Placeholder, replaced by the HTTP client implementation.
#include "kxhttp.h"
