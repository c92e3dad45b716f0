#include <libdewarp_vemo/projection_functor.h>

#include <libdewarp_vemo/error.h>
#include <log_capture.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <functional>
#include <string>

#include "projection_test_support.h"

namespace {

using vemo::libdewarp::Error;
using vemo::libdewarp::MapFunctor;
using vemo::libdewarp::Projection;
using vemo::libdewarp::ProjectionFunction;
using vemo::libdewarp::ProjectionFunctor;
using vemo::libdewarp::Vector2d;
using projection_test::SamePoint;

const DEWARP_INTERNAL_CAMERA_TYPE kBadCamera = static_cast<DEWARP_INTERNAL_CAMERA_TYPE>(5);

TEST(ProjectionFunctor, DefaultMapsEveryPointToTheOrigin) {
  ProjectionFunctor functor;
  EXPECT_TRUE(functor.GetFunction() == nullptr);
  for (const Vector2d& p : {Vector2d(0.0f, 0.0f), Vector2d(12.0f, -7.5f), Vector2d::InvalidVector}) {
    const Vector2d r = functor(p);
    EXPECT_EQ(0.0f, r.X);
    EXPECT_EQ(0.0f, r.Y);
  }
}

TEST(ProjectionFunctor, EquirectangularOnAFisheyeCameraCallsEquirectangularToFisheye) {
  const Vector2d squish(1.0f, 0.5f);
  ProjectionFunctor functor(EQUIRECTANGULAR_PROJECTION, CIRCULAR_FISHEYE_CAMERA, 611.15f, squish);
  EXPECT_TRUE(functor.GetFunction() == &Projection::EquirectangularToFisheye);
  EXPECT_EQ(611.15f, functor.GetFocalLength());
  EXPECT_TRUE(functor.GetSquish() == squish);
  const Vector2d p(300.0f, -120.0f);
  EXPECT_TRUE(SamePoint(Projection::EquirectangularToFisheye(p, 611.15f), functor(p)));
}

TEST(ProjectionFunctor, CallDoesNotApplyTheSquish) {
  ProjectionFunctor functor(&Projection::FisheyeToFisheye, 100.0f, Vector2d(2.0f, 3.0f));
  EXPECT_TRUE(SamePoint(Vector2d(5.0f, 7.0f), functor.Call(Vector2d(5.0f, 7.0f))));
}

TEST(ProjectionFunctor, CameraFirstGoesFromTheLensToTheProjection) {
  ProjectionFunctor functor(CIRCULAR_FISHEYE_CAMERA, MERCATOR_PROJECTION, 500.0f);
  EXPECT_TRUE(functor.GetFunction() == &Projection::FisheyeToMercator);
  EXPECT_TRUE(functor.GetSquish() == Projection::IdentityScale);
  ProjectionFunctor rectilinear(RECTILINEAR_CAMERA, PANNINI_PROJECTION, 500.0f);
  EXPECT_TRUE(rectilinear.GetFunction() == &Projection::RectilinearToPannini);
  ProjectionFunctor back(PANNINI_PROJECTION, RECTILINEAR_CAMERA, 500.0f);
  EXPECT_TRUE(back.GetFunction() == &Projection::PanniniToRectilinear);
}

TEST(ProjectionFunctor, FromAFunction) {
  ProjectionFunctor functor(&Projection::MirrorToPannini, 321.0f, Vector2d(1.5f, 1.0f));
  EXPECT_TRUE(functor.GetFunction() == &Projection::MirrorToPannini);
  const Vector2d p(50.0f, 60.0f);
  EXPECT_TRUE(SamePoint(Projection::MirrorToPannini(p, 321.0f), functor(p)));
}

TEST(ProjectionFunctor, CopyAndAssignment) {
  ProjectionFunctor a(CYLINDRICAL_PROJECTION, CIRCULAR_FISHEYE_CAMERA, 400.0f, Vector2d(1.0f, 0.5f));
  ProjectionFunctor b(a);
  EXPECT_TRUE(b.GetFunction() == a.GetFunction());
  EXPECT_EQ(400.0f, b.GetFocalLength());
  EXPECT_TRUE(b.GetSquish() == Vector2d(1.0f, 0.5f));
  ProjectionFunctor c;
  c = a;
  EXPECT_TRUE(c.GetFunction() == &Projection::CylindricalToFisheye);
  EXPECT_EQ(400.0f, c.GetFocalLength());
  ProjectionFunctor d;
  d.Set(a);
  EXPECT_TRUE(d.GetFunction() == &Projection::CylindricalToFisheye);
  // Through the base class the virtual Call reaches the conversion.
  MapFunctor& base = c;
  const Vector2d p(10.0f, 20.0f);
  EXPECT_TRUE(SamePoint(Projection::CylindricalToFisheye(p, 400.0f), base(p)));
}

TEST(ProjectionFunctor, SelfAssignmentWarnsAndKeepsTheFunctor) {
  vemo::test::LogCapture cap(LOG_WARNING);
  ProjectionFunctor a(CYLINDRICAL_PROJECTION, CIRCULAR_FISHEYE_CAMERA, 400.0f);
  ProjectionFunctor& same = a;
  a = same;
  ASSERT_EQ(1u, cap.lines().size());
  EXPECT_TRUE(cap.contains("Self assignment of ProjectionFunctor object"));
  EXPECT_TRUE(a.GetFunction() == &Projection::CylindricalToFisheye);
  EXPECT_EQ(400.0f, a.GetFocalLength());
}

TEST(ProjectionFunctor, SetForms) {
  ProjectionFunctor functor;
  functor.Set(RECTILINEAR_PROJECTION, CIRCULAR_FISHEYE_CAMERA, 10.0f, Vector2d(2.0f, 2.0f));
  EXPECT_TRUE(functor.GetFunction() == &Projection::RectilinearToFisheye);
  EXPECT_EQ(10.0f, functor.GetFocalLength());
  EXPECT_TRUE(functor.GetSquish() == Vector2d(2.0f, 2.0f));
  functor.Set(CIRCULAR_FISHEYE_CAMERA, ARCHITECTURAL_PROJECTION, 20.0f);
  EXPECT_TRUE(functor.GetFunction() == &Projection::FisheyeToArchitectural);
  EXPECT_EQ(20.0f, functor.GetFocalLength());
  EXPECT_TRUE(functor.GetSquish() == Projection::IdentityScale);
  functor.Set(&Projection::StereographicToMirror, 30.0f, Vector2d(1.0f, 4.0f));
  EXPECT_TRUE(functor.GetFunction() == &Projection::StereographicToMirror);
  EXPECT_EQ(30.0f, functor.GetFocalLength());
  EXPECT_TRUE(functor.GetSquish() == Vector2d(1.0f, 4.0f));
  functor.Set(nullptr, 30.0f);
  EXPECT_TRUE(SamePoint(Vector2d(0.0f, 0.0f), functor(Vector2d(3.0f, 4.0f))));
}

TEST(ProjectionFunctor, ConvertCamera) {
  EXPECT_EQ(ProjectionFunctor::RECTILINEAR, ProjectionFunctor::ConvertCamera(RECTILINEAR_CAMERA));
  EXPECT_EQ(ProjectionFunctor::FISHEYE, ProjectionFunctor::ConvertCamera(CIRCULAR_FISHEYE_CAMERA));
}

void ExpectInvalidCameraType(const std::function<void()>& action) {
  errno = 0;
  try {
    action();
    ADD_FAILURE() << "no exception";
  } catch (const Error& e) {
    EXPECT_EQ(EINVAL, errno);
    const std::string what = e.what();
    EXPECT_NE(std::string::npos, what.find("Invalid camera type")) << what;
    EXPECT_NE(std::string::npos, what.find("ProjectionFunctor")) << what;
    EXPECT_NE(std::string::npos, what.find("ConvertCamera")) << what;
    EXPECT_NE(std::string::npos, what.find("EINVAL")) << what;
  }
}

TEST(ProjectionFunctor, UnknownCameraTypeThrowsInvalidArgument) {
  ExpectInvalidCameraType([] { ProjectionFunctor::ConvertCamera(kBadCamera); });
  ExpectInvalidCameraType([] { ProjectionFunctor::ConvertCamera(static_cast<DEWARP_INTERNAL_CAMERA_TYPE>(-1)); });
  ExpectInvalidCameraType([] { ProjectionFunctor f(CYLINDRICAL_PROJECTION, kBadCamera, 1.0f); });
  ExpectInvalidCameraType([] { ProjectionFunctor f(kBadCamera, CYLINDRICAL_PROJECTION, 1.0f, Vector2d(1.0f, 1.0f)); });
  ExpectInvalidCameraType([] { ProjectionFunctor::GetProjection(CYLINDRICAL_PROJECTION, kBadCamera); });
  ExpectInvalidCameraType([] { ProjectionFunctor::GetProjection(kBadCamera, CYLINDRICAL_PROJECTION); });
}

TEST(ProjectionFunctor, FailedSetLeavesTheFunctorAsItWas) {
  ProjectionFunctor functor(MERCATOR_PROJECTION, CIRCULAR_FISHEYE_CAMERA, 77.0f, Vector2d(1.0f, 0.5f));
  ExpectInvalidCameraType([&] { functor.Set(PANNINI_PROJECTION, kBadCamera, 1.0f); });
  ExpectInvalidCameraType([&] { functor.Set(kBadCamera, PANNINI_PROJECTION, 1.0f); });
  EXPECT_TRUE(functor.GetFunction() == &Projection::MercatorToFisheye);
  EXPECT_EQ(77.0f, functor.GetFocalLength());
  EXPECT_TRUE(functor.GetSquish() == Vector2d(1.0f, 0.5f));
}

TEST(ProjectionFunctor, ConvertCameraLogsNothing) {
  vemo::test::LogCapture cap(LOG_INFO);
  try {
    ProjectionFunctor::ConvertCamera(kBadCamera);
  } catch (const Error&) {
  }
  EXPECT_TRUE(cap.lines().empty());
}

// The internal list in order, with the projection each value names. CYLINDRIC is another name
// of the cylindrical projection.
const char* const kInternalNames[] = {
    "Rectilinear", "Cylindrical", "Equirectangular", "Mercator", "LambertCylindrical",
    "MillerCylindrical", "Pannini", "Architectural", "EquirectangularPannini", "Stereographic",
    "Orthographic", "Equisolid", "Cylindrical", "Fisheye", "Spherical", "Mirror"};

TEST(ProjectionFunctor, GetProjectionForEveryPairOfTheInternalList) {
  int pairs = 0;
  for (int from = 0; from < 16; ++from) {
    for (int to = 0; to < 16; ++to) {
      const ProjectionFunction expected = projection_test::Function(kInternalNames[from], kInternalNames[to]);
      ASSERT_TRUE(expected != nullptr);
      EXPECT_TRUE(ProjectionFunctor::GetProjection(static_cast<ProjectionFunctor::PROJECTION>(from),
                                                   static_cast<ProjectionFunctor::PROJECTION>(to)) == expected)
          << from << " -> " << to;
      ++pairs;
    }
  }
  EXPECT_EQ(256, pairs);
}

TEST(ProjectionFunctor, CylindricIsTheCylindricalProjection) {
  EXPECT_TRUE(ProjectionFunctor::GetProjection(ProjectionFunctor::CYLINDRIC, ProjectionFunctor::FISHEYE) ==
              &Projection::CylindricalToFisheye);
  EXPECT_TRUE(ProjectionFunctor::GetProjection(ProjectionFunctor::FISHEYE, ProjectionFunctor::CYLINDRIC) ==
              &Projection::FisheyeToCylindrical);
  EXPECT_TRUE(ProjectionFunctor::GetProjection(ProjectionFunctor::CYLINDRIC, ProjectionFunctor::CYLINDRICAL) ==
              &Projection::CylindricalToCylindrical);
  EXPECT_TRUE(ProjectionFunctor::GetProjection(ProjectionFunctor::CYLINDRIC, ProjectionFunctor::SPHERICAL) ==
              &Projection::CylindricalToSpherical);
}

TEST(ProjectionFunctor, InternalValuesMatchThePublicOnes) {
  EXPECT_EQ(static_cast<int>(RECTILINEAR_PROJECTION), ProjectionFunctor::RECTILINEAR);
  EXPECT_EQ(static_cast<int>(CYLINDRICAL_PROJECTION), ProjectionFunctor::CYLINDRICAL);
  EXPECT_EQ(static_cast<int>(EQUIRECTANGULAR_PROJECTION), ProjectionFunctor::EQUIRECTANGULAR);
  EXPECT_EQ(static_cast<int>(MERCATOR_PROJECTION), ProjectionFunctor::MERCATOR);
  EXPECT_EQ(static_cast<int>(LAMBERT_CYLINDRICAL_PROJECTION), ProjectionFunctor::LAMBERT_CYLINDRICAL);
  EXPECT_EQ(static_cast<int>(MILLER_CYLINDRICAL_PROJECTION), ProjectionFunctor::MILLER_CYLINDRICAL);
  EXPECT_EQ(static_cast<int>(PANNINI_PROJECTION), ProjectionFunctor::PANNINI);
  EXPECT_EQ(static_cast<int>(ARCHITECTURAL_PROJECTION), ProjectionFunctor::ARCHITECTURAL);
  EXPECT_EQ(static_cast<int>(EQUIRECTANGULAR_PANNINI_PROJECTION), ProjectionFunctor::EQUIRECTANGULAR_PANNINI);
  EXPECT_EQ(12, ProjectionFunctor::CYLINDRIC);
  EXPECT_EQ(13, ProjectionFunctor::FISHEYE);
  EXPECT_EQ(14, ProjectionFunctor::SPHERICAL);
  EXPECT_EQ(15, ProjectionFunctor::MIRROR);
}

TEST(ProjectionFunctor, ValuesOutsideTheListHaveNoFunction) {
  EXPECT_TRUE(ProjectionFunctor::GetProjection(static_cast<ProjectionFunctor::PROJECTION>(16),
                                               ProjectionFunctor::FISHEYE) == nullptr);
  EXPECT_TRUE(ProjectionFunctor::GetProjection(ProjectionFunctor::FISHEYE,
                                               static_cast<ProjectionFunctor::PROJECTION>(-1)) == nullptr);
  ProjectionFunctor functor(static_cast<DEWARP_PROJECTION>(40), CIRCULAR_FISHEYE_CAMERA, 100.0f);
  EXPECT_TRUE(SamePoint(Vector2d(0.0f, 0.0f), functor(Vector2d(1.0f, 2.0f))));
}

TEST(ProjectionFunctor, PublicProjectionsOnBothCameras) {
  for (int p = 0; p <= 8; ++p) {
    const DEWARP_PROJECTION projection = static_cast<DEWARP_PROJECTION>(p);
    EXPECT_TRUE(ProjectionFunctor::GetProjection(projection, CIRCULAR_FISHEYE_CAMERA) ==
                projection_test::Function(kInternalNames[p], "Fisheye"));
    EXPECT_TRUE(ProjectionFunctor::GetProjection(projection, RECTILINEAR_CAMERA) ==
                projection_test::Function(kInternalNames[p], "Rectilinear"));
    EXPECT_TRUE(ProjectionFunctor::GetProjection(CIRCULAR_FISHEYE_CAMERA, projection) ==
                projection_test::Function("Fisheye", kInternalNames[p]));
    EXPECT_TRUE(ProjectionFunctor::GetProjection(RECTILINEAR_CAMERA, projection) ==
                projection_test::Function("Rectilinear", kInternalNames[p]));
  }
}

}  // namespace
