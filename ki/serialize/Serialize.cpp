// Serialize.cpp - the out-of-line parts of the serialization interface: the
// destructors (which anchor the virtual tables here) and Identifier.
#include "ki/serialize/Serialize.h"

kiISerialize::~kiISerialize() = default;

int kiISerialize::Identifier(const char* name) { return String(name, false); }

kiEmptySerialize::~kiEmptySerialize() = default;
