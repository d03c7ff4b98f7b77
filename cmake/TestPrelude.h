// Compiled once for all tests: the framework is most of what one of them costs.
#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>
