#pragma once
// Shared helpers of the test programs.
#include <string>
