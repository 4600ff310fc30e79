// search_catalogue.cpp - a media server's search, in small: a dozen items in
// memory, the criteria a control point sends, and an evaluator that tells the
// parsed tree what each item holds.
#include <cstdio>
#include <ki/ki.h>
#include <ki/search/ExpressionParser.h>

namespace {

// An item is a list of named fields. Values are kiCString so that MatchInt and
// MatchDate read them without a copy.
struct Field {
  const char* name;
  kiCString value;
};

struct Item {
  const char* id;
  Field fields[7];  // unused rows have a null name
};

const kiCString* Lookup(const Item& item, const kiCString& property) {
  for (const Field& f : item.fields) {
    if (f.name != nullptr && property == f.name) return &f.value;
  }
  return nullptr;
}

bool IsNumeric(const kiCString& property) {
  return property == "upnp:originalTrackNumber" || property == "res@size";
}

// The application's side of an evaluation: the tree calls Evaluate for every
// comparison it reaches, and the answer comes from the node's Match primitive
// that fits the field.
class CatalogueEvaluator : public kiSearchExpressionEvaluator {
 public:
  const Item* item = nullptr;

  bool Evaluate(kiRelExpression* e) override {
    const kiCString* value = Lookup(*item, e->GetProperty());
    if (value == nullptr) return e->MatchString(nullptr);  // absent: "exists false" holds
    // Typed matches apply only to a value of their type; anything else
    // (exists, contains, a text value) is answered on the text.
    const int type = e->GetValueType();
    if (IsNumeric(e->GetProperty()) && type == kiSearchValue_Integer) return e->MatchInt(*value);
    if (e->GetProperty() == "dc:date" && type == kiSearchValue_Date) return e->MatchDate(*value);
    return e->MatchString(value->c_str());
  }
};

const char* Title(const Item& item) {
  const kiCString* title = Lookup(item, "dc:title");
  return title != nullptr ? title->c_str() : "(untitled)";
}

void Search(const char* criteria, const Item* items, int count) {
  std::printf("%s\n", criteria);
  kiExpressionParser parser{kiCString(criteria)};
  if (!parser.Parse()) {
    std::printf("  does not parse\n\n");
    return;
  }
  CatalogueEvaluator evaluator;
  for (int i = 0; i < count; ++i) {
    evaluator.item = &items[i];
    if (parser.Evaluate(&evaluator)) std::printf("  %-4s %s\n", items[i].id, Title(items[i]));
  }
  // What a server could look up in an index before walking its items.
  kiArray_t* required = parser.GetDiscriminantCriteria();
  const unsigned int requiredCount = kiArray_GetCount(required);
  std::printf("  every match has:");
  for (unsigned int i = 0; i < requiredCount; ++i) {
    const kiRelExpression* e = static_cast<const kiRelExpression*>(kiArray_Get(required, i));
    const bool bare = e->GetOperatorID() == kiSearchOp_Exists;  // true or false, unquoted
    std::printf(" [%s %s %s%s%s]", e->GetProperty().c_str(), e->GetOperator().c_str(),
                bare ? "" : "\"", e->GetValue().c_str(), bare ? "" : "\"");
  }
  kiArray_Delete(required);
  std::printf("%s\n  properties: %s\n\n", requiredCount == 0 ? " -" : "",
              parser.GetSearchCriteriaList().c_str());
}

}  // namespace

int main() {
  const Item items[] = {
      {"t1",
       {{"upnp:class", "object.item.audioItem.musicTrack"},
        {"dc:title", "So What"},
        {"upnp:artist", "Miles Davis"},
        {"upnp:genre", "Jazz"},
        {"upnp:originalTrackNumber", "1"},
        {"dc:date", "1959-08-17"},
        {"res@duration", "0:09:22.000"}}},
      {"t2",
       {{"upnp:class", "object.item.audioItem.musicTrack"},
        {"dc:title", "Blue in Green"},
        {"upnp:artist", "Miles Davis"},
        {"upnp:genre", "Jazz"},
        {"upnp:originalTrackNumber", "3"},
        {"dc:date", "1959-08-17"},
        {"res@duration", "0:05:37.000"}}},
      {"t3",
       {{"upnp:class", "object.item.audioItem.musicTrack"},
        {"dc:title", "Crazy in Love"},
        {"upnp:artist", "Beyonce"},
        {"upnp:genre", "Pop"},
        {"upnp:originalTrackNumber", "1"},
        {"dc:date", "2003-06-24"}}},
      {"t4",
       {{"upnp:class", "object.item.audioItem.musicTrack"},
        {"dc:title", "Love Story"},
        {"upnp:artist", "Taylor Swift"},
        {"upnp:originalTrackNumber", "3"},
        {"dc:date", "2020-11-13"}}},
      {"t5",
       {{"upnp:class", "object.item.audioItem.audioBroadcast"},
        {"dc:title", "Late Night Jazz"},
        {"upnp:genre", "Jazz"}}},
      {"a1",
       {{"upnp:class", "object.container.album.musicAlbum"},
        {"dc:title", "Kind of Blue"},
        {"upnp:artist", "Miles Davis"},
        {"dc:date", "1959-08-17"}}},
      {"a2",
       {{"upnp:class", "object.container.album.musicAlbum"},
        {"dc:title", "Folklore"},
        {"upnp:artist", "Taylor Swift"},
        {"dc:date", "2020-07-24"}}},
      {"v1",
       {{"upnp:class", "object.item.videoItem.movie"},
        {"dc:title", "Blue Velvet"},
        {"dc:date", "1986-09-19"},
        {"res@duration", "2:00:00.000"},
        {"res@size", "734003200"}}},
      {"v2",
       {{"upnp:class", "object.item.videoItem"},
        {"dc:title", "Holiday clip"},
        {"dc:date", "2020-08-02T14:30:00"},
        {"res@size", "52428800"}}},
      {"p1",
       {{"upnp:class", "object.item.imageItem.photo"},
        {"dc:title", "Beach"},
        {"dc:date", "2020-08-01T09:12:44"},
        {"res@size", "3145728"}}},
      {"p2",
       {{"upnp:class", "object.item.imageItem.photo"},
        {"dc:title", "blue sky"},
        {"dc:date", "2021-01-01T00:00:00"}}},
      {"g1",
       {{"upnp:class", "object.container.genre.musicGenre"},
        {"dc:title", "Jazz"},
        {"upnp:genre", "Jazz"}}},
  };
  const int count = static_cast<int>(sizeof(items) / sizeof(items[0]));

  const char* const criteria[] = {
      "*",
      "upnp:class derivedfrom \"object.item.audioItem\" and dc:title contains \"love\"",
      "upnp:class derivedfrom \"object.item\" and res@duration exists true",
      "upnp:class = \"object.container.album.musicAlbum\" and upnp:genre exists false",
      "dc:title like \"Blue*\"",
      "dc:date >= \"2020-01-01\" and dc:date < \"2021-01-01\"",
      "upnp:class derivedfrom \"object.item\" and res@size > \"10000000\"",
      "upnp:class derivedfrom \"object.item.audioItem\" and (upnp:artist = \"miles davis\" or "
      "upnp:genre = \"Jazz\") and upnp:originalTrackNumber <= \"2\"",
      "upnp:class derivedfrom \"object.item\" and dc:title contains \"blue\" or upnp:genre = "
      "\"Jazz\"",
      "dc:title=\"Beach\"",  // a separator is required around every operator
  };
  for (const char* c : criteria) Search(c, items, count);
  return 0;
}
