// StringTokenizer.cpp - kiCStringTokenizer and kiStringTokenizer, thin shells
// over the one tokenizer in StringTokenizer_p.h.
#include "ki/core/StringTokenizer.h"

#include "ki/core/StringTokenizer_p.h"

namespace {
using NarrowCore = kiTokenizerCore<kiCStringTokenizer>;
using WideCore = kiTokenizerCore<kiStringTokenizer>;
}  // namespace

// ---- kiCStringTokenizer -------------------------------------------------------

kiCStringTokenizer::kiCStringTokenizer() = default;

kiCStringTokenizer::kiCStringTokenizer(const kiCString& text, const kiCString& delimiters,
                                       kiCStringTokenizerMode mode) {
  NarrowCore::SetString(*this, text, delimiters, mode);
}

void kiCStringTokenizer::SetString(const kiCString& text, const kiCString& delimiters,
                                   kiCStringTokenizerMode mode) {
  NarrowCore::SetString(*this, text, delimiters, mode);
}

void kiCStringTokenizer::Reinit(const kiCString& text) { NarrowCore::Reinit(*this, text); }

bool kiCStringTokenizer::HasMoreTokens() const { return NarrowCore::HasMoreTokens(*this); }

kiCString kiCStringTokenizer::GetNextToken() { return NarrowCore::GetNextToken(*this); }

unsigned int kiCStringTokenizer::CountTokens() { return NarrowCore::CountTokens(*this); }

// ---- kiStringTokenizer --------------------------------------------------------

kiStringTokenizer::kiStringTokenizer() = default;

kiStringTokenizer::kiStringTokenizer(const kiString& text, const kiString& delimiters,
                                     kiStringTokenizerMode mode) {
  WideCore::SetString(*this, text, delimiters, mode);
}

void kiStringTokenizer::SetString(const kiString& text, const kiString& delimiters,
                                  kiStringTokenizerMode mode) {
  WideCore::SetString(*this, text, delimiters, mode);
}

void kiStringTokenizer::Reinit(const kiString& text) { WideCore::Reinit(*this, text); }

bool kiStringTokenizer::HasMoreTokens() const { return WideCore::HasMoreTokens(*this); }

kiString kiStringTokenizer::GetNextToken() { return WideCore::GetNextToken(*this); }

unsigned int kiStringTokenizer::CountTokens() { return WideCore::CountTokens(*this); }
