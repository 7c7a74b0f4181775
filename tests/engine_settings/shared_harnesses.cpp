// The whole-run harness and the test volumes of other test programs, built into this one too.
#include "engine_run/run_harness.cpp"
#include "platform/platform_test_support.cpp"
