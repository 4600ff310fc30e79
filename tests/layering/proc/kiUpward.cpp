// kiUpward.cpp - a layering fault for the check to find: the procedural layer
// reaching up to a class. Never compiled.
#include "ki/core/String.h"
