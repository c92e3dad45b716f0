// A host that loads the engine at run time: libdewarp_vemo.so opens with dlopen and offers the C
// interface under its twenty names, and a channel opened through them works.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <string>

#include <libdewarp_vemo/dewarp.h>

namespace {

const char* const kNames[] = {
    "dewarp_set_log",          "dewarp_open",
    "dewarp_internal_open",    "dewarp_close",
    "dewarp_channel_valid",    "dewarp_set_view",
    "dewarp_set_projection",   "dewarp_set_aspect_ratio",
    "dewarp_set_interpolation", "dewarp_get_native_resolution",
    "dewarp_set_ptz",          "dewarp_get_ptz",
    "dewarp_get_ptz_range",    "dewarp_calc_ptz_position",
    "dewarp_image",            "dewarp_internal_set_model",
    "dewarp_internal_get_model", "dewarp_internal_set_mount",
    "dewarp_internal_get_mount", "GetNorvikKestrelMk2Camera"};

TEST(SharedLibrary, OpensAndResolvesTheInterface) {
  const std::string path = std::string(DEWARP_BINARY_DIR) + "/lib/libdewarp_vemo.so";
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  for (const char* name : kNames) {
    EXPECT_NE(dlsym(library, name), nullptr) << name;
  }
  EXPECT_EQ(sizeof kNames / sizeof kNames[0], 20u);
  // The engine's classes stay inside.
  EXPECT_EQ(dlsym(library, "_ZN4vemo9libdewarp7Channel9SetModelERK28DEWARP_INTERNAL_CAMERA_MODEL"), nullptr);

  typedef DEWARP_INTERNAL_CAMERA_MODEL (*ModelFunction)();
  typedef DEWARP_CHANNEL (*OpenFunction)(const DEWARP_INTERNAL_CAMERA_MODEL*, DEWARP_INTERNAL_CAMERA_MOUNT,
                                         const DEWARP_CHANNEL_SETTINGS*);
  typedef DEWARP_INTERNAL_CAMERA_MOUNT (*GetMountFunction)(DEWARP_CHANNEL);
  typedef int (*ValidFunction)(DEWARP_CHANNEL);
  typedef void (*CloseFunction)(DEWARP_CHANNEL);
  const ModelFunction model = reinterpret_cast<ModelFunction>(dlsym(library, "GetNorvikKestrelMk2Camera"));
  const OpenFunction open = reinterpret_cast<OpenFunction>(dlsym(library, "dewarp_internal_open"));
  const GetMountFunction mount = reinterpret_cast<GetMountFunction>(dlsym(library, "dewarp_internal_get_mount"));
  const ValidFunction valid = reinterpret_cast<ValidFunction>(dlsym(library, "dewarp_channel_valid"));
  const CloseFunction close = reinterpret_cast<CloseFunction>(dlsym(library, "dewarp_close"));
  ASSERT_TRUE(model && open && mount && valid && close);
  const DEWARP_INTERNAL_CAMERA_MODEL builtIn = model();
  EXPECT_EQ(builtIn.ResolutionH, 1936u);
  EXPECT_EQ(builtIn.FovD, 183.0f);
  DEWARP_CHANNEL channel = open(&builtIn, FLOOR_MOUNT, nullptr);
  ASSERT_NE(channel, nullptr);
  EXPECT_EQ(valid(channel), 0);
  EXPECT_EQ(mount(channel), FLOOR_MOUNT);
  EXPECT_EQ(mount(nullptr), WALL_MOUNT);
  close(channel);
  EXPECT_EQ(dlclose(library), 0);
}

}  // namespace
