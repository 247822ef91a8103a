#pragma once

#include "support/WebKitTest.h"
