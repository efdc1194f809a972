// placeholder until the real servers are wired in
#include <gtest/gtest.h>
