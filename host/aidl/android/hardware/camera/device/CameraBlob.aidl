package android.hardware.camera.device;

import android.hardware.camera.device.CameraBlobId;

// The last eight bytes of a BLOB buffer: what it holds and how much of it.
@VintfStability
parcelable CameraBlob {
    CameraBlobId blobId;
    int blobSizeBytes;
}
