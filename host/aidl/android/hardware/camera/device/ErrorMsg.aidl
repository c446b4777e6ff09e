package android.hardware.camera.device;

import android.hardware.camera.device.ErrorCode;

// Says that something of a capture will not come.
@VintfStability
parcelable ErrorMsg {
    int frameNumber;

    // The stream of an ERROR_BUFFER; else -1.
    int errorStreamId;

    ErrorCode errorCode;
}
