# search/ - content-directory search criteria: the parser and the tree it
# builds, with the matching primitives.
list(APPEND KI_PUBLIC_HEADERS
  search/ExpressionParser.h
  search/SearchExpression.h)
list(APPEND KI_SOURCES
  search/ExpressionParser.cpp
  search/Like.cpp
  search/Like_p.h
  search/RelExpressionMatch.cpp
  search/SearchExpression.cpp)
