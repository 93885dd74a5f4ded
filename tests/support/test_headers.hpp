// What nearly every test for Windows includes and what takes long to read: test_headers in ../CMakeLists.txt compiles
// it once for all of them. A source includes what it uses nevertheless.
#pragma once

#include <windows.h>

#include <comdef.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <msxml2.h>
#include <ocidl.h>
#include <oleauto.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
