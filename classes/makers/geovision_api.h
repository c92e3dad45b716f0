// Geovision's dewarping library, libGeoFESDK.so: a C factory for the IFishEye interface, whose
// virtual methods work on numbered channels.
//
// Marked "MAKER:" below is what the maker's own header fixes and may need correcting here: the
// order of the virtual methods (calls go through the object's virtual table), their parameter
// types, and the records' fields beyond those the plug-in sets.
#ifndef DEWARPWRAPPER_MAKERS_GEOVISION_API_H
#define DEWARPWRAPPER_MAKERS_GEOVISION_API_H

// View of a channel. MAKER: field types and order.
struct FE_ViewParams {
  int ViewMode;   // 8 single PTZ view and panorama, 4 the further view kind
  int CamPos;     // 2 floor, 1 wall, 0 ceiling
  int SetFrame;
  int FE_u;       // fisheye centre: the library takes half the input height here ...
  int FE_v;       // ... and half the input width here
  int FE_Lr;      // fisheye radii
  int FE_Sr;
};

// Event record of GvFE_ParamsUpdated; the plug-in passes it all zero.
// MAKER: the fields (this reserve must be at least the record's real size).
struct FE_EventParams {
  int Reserved[32];
};

// MAKER: the method order and signatures.
class IFishEye {
public:
  // Opens channel `camera` for input and output frames of the given sizes; 0 on success.
  virtual int GvFE_Initialize(int camera, int inputWidth, int inputHeight, int outputWidth,
                              int outputHeight, int bytesPerPixel) = 0;
  virtual int GvFESetPosition(int camera, FE_ViewParams* view) = 0;
  virtual int GvFE_ParamsUpdated(int camera, FE_EventParams* event, FE_ViewParams* view) = 0;
  // MAKER: the meaning of the last argument (the plug-in passes 1).
  virtual int SetAbsolutePTZ(int camera, short pan, short tilt, short zoom, int mode) = 0;
  // Dewarps one input frame into the output frame; 0 on success.
  virtual int GvFE_VideoInput(int camera, unsigned char* input, unsigned char* output) = 0;
  virtual int GvFE_Close(int camera) = 0;

protected:
  // Objects are released through IFishEye_Release only.
  ~IFishEye() = default;
};

extern "C" {
IFishEye* IFishEye_Create();
void IFishEye_Release(IFishEye* fisheye);
}

#endif
