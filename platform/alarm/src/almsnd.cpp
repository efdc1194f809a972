// Placeholder, replaced by the alarm implementation.
#include "almsnd.h"
