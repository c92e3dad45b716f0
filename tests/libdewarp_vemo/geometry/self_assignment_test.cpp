// Every value class warns when an object is assigned to itself and keeps its value; an
// ordinary assignment copies silently.
#include <libdewarp_vemo/euler_angles.h>
#include <libdewarp_vemo/field_of_view.h>
#include <libdewarp_vemo/ptz_position.h>
#include <libdewarp_vemo/ptz_range.h>
#include <libdewarp_vemo/quaternion.h>
#include <libdewarp_vemo/rectangle_2d.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/rotation_matrix_3d.h>
#include <libdewarp_vemo/vector_2d.h>
#include <libdewarp_vemo/vector_3d.h>

#include <gtest/gtest.h>
#include <log_capture.h>

#include <cstring>
#include <string>

namespace {

using namespace vemo::libdewarp;

// A sample value of each class, different from its default, and the class name in the warning.
template <class T>
struct Sample;
template <>
struct Sample<Vector2d> {
  static Vector2d Make() { return Vector2d(1.5f, -2.0f); }
  static const char* Name() { return "Vector2d"; }
};
template <>
struct Sample<Vector3d> {
  static Vector3d Make() { return Vector3d(1.5f, -2.0f, 3.0f); }
  static const char* Name() { return "Vector3d"; }
};
template <>
struct Sample<Quaternion> {
  static Quaternion Make() { return Quaternion(0.5f, 0.5f, -0.5f, 0.5f); }
  static const char* Name() { return "Quaternion"; }
};
template <>
struct Sample<EulerAngles> {
  static EulerAngles Make() { return EulerAngles(0.1f, 0.2f, 0.3f); }
  static const char* Name() { return "EulerAngles"; }
};
template <>
struct Sample<RotationMatrix3d> {
  static RotationMatrix3d Make() { return RotationMatrix3d(0.1f, 0.2f, 0.3f); }
  static const char* Name() { return "RotationMatrix3d"; }
};
template <>
struct Sample<Resolution> {
  static Resolution Make() { return Resolution(640, 480); }
  static const char* Name() { return "Resolution"; }
};
template <>
struct Sample<Rectangle2d> {
  static Rectangle2d Make() { return Rectangle2d(1.0f, 9.0f, 5.0f, 2.0f); }
  static const char* Name() { return "Rectangle2d"; }
};
template <>
struct Sample<FieldOfView> {
  static FieldOfView Make() { return FieldOfView(1.0f, 2.0f, 3.0f); }
  static const char* Name() { return "FieldOfView"; }
};
template <>
struct Sample<PtzPosition> {
  static PtzPosition Make() { return PtzPosition(EulerAngles(0.1f, 0.2f, 0.3f), 2.0f); }
  static const char* Name() { return "PtzPosition"; }
};
template <>
struct Sample<PtzRange> {
  static PtzRange Make() { return PtzRange(Vector2d(1, -1), Vector2d(2, -2), Vector2d(3, -3), Vector2d(4, 1), 3u); }
  static const char* Name() { return "PtzRange"; }
};

// Member-by-member identity (bit patterns, so that a NaN would compare too).
bool Same(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0; }
bool SameData(const Vector2d& a, const Vector2d& b) { return Same(a.X, b.X) && Same(a.Y, b.Y); }
bool SameData(const Vector3d& a, const Vector3d& b) { return Same(a.X, b.X) && Same(a.Y, b.Y) && Same(a.Z, b.Z); }
bool SameData(const Quaternion& a, const Quaternion& b) {
  return Same(a.W, b.W) && Same(a.X, b.X) && Same(a.Y, b.Y) && Same(a.Z, b.Z);
}
bool SameData(const EulerAngles& a, const EulerAngles& b) {
  return Same(a.Yaw, b.Yaw) && Same(a.Pitch, b.Pitch) && Same(a.Roll, b.Roll);
}
bool SameData(const RotationMatrix3d& a, const RotationMatrix3d& b) {
  return Same(a.M11, b.M11) && Same(a.M12, b.M12) && Same(a.M13, b.M13) && Same(a.M21, b.M21) && Same(a.M22, b.M22) &&
         Same(a.M23, b.M23) && Same(a.M31, b.M31) && Same(a.M32, b.M32) && Same(a.M33, b.M33);
}
bool SameData(const Rectangle2d& a, const Rectangle2d& b) {
  return Same(a.Left, b.Left) && Same(a.Top, b.Top) && Same(a.Right, b.Right) && Same(a.Bottom, b.Bottom);
}
bool SameData(const FieldOfView& a, const FieldOfView& b) {
  return Same(a.Horizontal, b.Horizontal) && Same(a.Vertical, b.Vertical) && Same(a.Diagonal, b.Diagonal);
}
bool SameData(const PtzPosition& a, const PtzPosition& b) {
  return SameData(a.m_obOrientation, b.m_obOrientation) && Same(a.m_fZoom, b.m_fZoom);
}
bool SameData(const PtzRange& a, const PtzRange& b) {
  return SameData(a.m_obPanRange, b.m_obPanRange) && SameData(a.m_obTiltRange, b.m_obTiltRange) &&
         SameData(a.m_obRollRange, b.m_obRollRange) && SameData(a.m_obZoomRange, b.m_obZoomRange) &&
         a.m_ulFlags == b.m_ulFlags;
}

template <class T>
class SelfAssignment : public ::testing::Test {};
typedef ::testing::Types<Vector2d, Vector3d, Quaternion, EulerAngles, RotationMatrix3d, Resolution, Rectangle2d,
                         FieldOfView, PtzPosition, PtzRange>
    ValueClasses;
TYPED_TEST_SUITE(SelfAssignment, ValueClasses);

TYPED_TEST(SelfAssignment, WarnsWithTheClassNameAndKeepsTheValue) {
  TypeParam value = Sample<TypeParam>::Make();
  const TypeParam before = Sample<TypeParam>::Make();
  TypeParam& alias = value;
  vemo::test::LogCapture capture(LOG_WARNING);
  TypeParam& result = (value = alias);
  EXPECT_EQ(&result, &value);
  ASSERT_EQ(capture.lines().size(), 1u);
  EXPECT_EQ(capture.lines()[0], std::string("LIBDEWARP: WARNING - Self assignment of ") + Sample<TypeParam>::Name() +
                                    " object\n");
  EXPECT_EQ(capture.formats()[0], "LIBDEWARP: WARNING - Self assignment of %s object\n");
  EXPECT_TRUE(SameData(value, before));
}

TYPED_TEST(SelfAssignment, OrdinaryAssignmentCopiesSilently) {
  TypeParam target;
  const TypeParam source = Sample<TypeParam>::Make();
  EXPECT_FALSE(SameData(target, source));
  vemo::test::LogCapture capture(LOG_WARNING);
  target = source;
  EXPECT_TRUE(SameData(target, source));
  EXPECT_TRUE(capture.lines().empty());
  const TypeParam copy(source);
  EXPECT_TRUE(SameData(copy, source));
}

TYPED_TEST(SelfAssignment, EachObjectCarriesAVirtualTable) {
  EXPECT_TRUE(std::has_virtual_destructor<TypeParam>::value);
}

}  // namespace
