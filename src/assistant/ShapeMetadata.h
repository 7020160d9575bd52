// One shape as the host's macro project reports it, and the strict decoding
// of the JSON arrays it sends.
//
// Provides: ShapeMetadata, ShapeDecoding, decodeShapeList(), describeShapes(),
// appendShapesDescription().
// Thread: any; decoding keeps one parser per thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

// Fields carry the JSON keys as they stand, in the order the decoder checks them.
struct ShapeMetadata {
    std::int64_t ID = 0;
    std::string Name;
    double Top = 0;
    double Left = 0;
    double Width = 0;
    double Height = 0;
    std::string ShpType;  // "9" is a line
    bool HasFill = false;
    std::int64_t FillColor = 0;
    bool HasTextFrame = false;
    bool HasText = false;
    bool AutoSize = false;
    bool WordWrap = false;
    double MarginTop = 0;
    double MarginLeft = 0;
    std::int64_t ZOrder = 0;  // higher lies above
    bool HasLineBreaks = false;

    // Derived, never serialised; no detector uses them.
    double CenterX() const { return Left + Width * 0.5; }
    double CenterY() const { return Top + Height * 0.5; }

    bool operator==(const ShapeMetadata&) const = default;
};

struct ShapeDecoding {
    bool ok = false;
    std::vector<ShapeMetadata> shapes;  // empty unless ok
    std::string error;                  // one line naming the key and the index; empty when ok
};

// Decodes a JSON array of shape objects. Every one of the 17 keys is
// required; null and wrong types fail the whole array at the first bad
// value, checked shape by shape and key by key in the field order. Extra
// keys are ignored; whole numbers are taken for doubles; integers refuse a
// fractional part. Trailing content after the array is refused.
// `padded`: the text's buffer stays readable for 64 bytes past its end
// (shapeTextPadding), so it is parsed in place instead of copied first.
ShapeDecoding decodeShapeList(std::string_view json, bool padded = false);
inline constexpr std::size_t shapeTextPadding = 64;

// The printed form of a list, one line:
// [ShapeMetadata(ID: 1, Name: "Box", Top: 10.0, ...), ShapeMetadata(...)]
std::string describeShapes(const std::vector<ShapeMetadata>& shapes);
// The same, appended to `out`.
void appendShapesDescription(std::string& out, const std::vector<ShapeMetadata>& shapes);

}  // namespace velmora
