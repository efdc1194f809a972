// Placeholder, replaced by the IPC implementation.
#include "kxcom.h"
