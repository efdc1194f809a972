// Failures that a test asks for with KXCOM_FailNext.
#ifndef KXCOM_FAULTS_H
#define KXCOM_FAULTS_H

#include "kxcom.h"

namespace kxcom {

// True when the next call of this kind is to fail; counts the failure off.
bool TakeFault(KXCOM_FAULT eCall);

}  // namespace kxcom

#endif
