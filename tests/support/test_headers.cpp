// A library wants a source; the headers are what it is for.
#include "tests/support/test_headers.hpp"
