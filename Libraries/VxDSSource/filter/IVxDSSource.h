#pragma once

#include <windows.h>

#include <oaidl.h>
#include <unknwn.h>

/// The control interface of the filter "Vexa DirectShow Source".
///
/// This header stands alone: a client includes it and asks the filter for IID_IVxDSSource.
///
/// Texts are BSTRs: an argument is read with its own length (null reads as empty text); a text that is
/// returned is new and freed by the caller with SysFreeString. Output pointers must not be null. Results are
/// S_OK unless said otherwise. The methods on features (GetParameterCount to GetParameterVisibility) return
/// E_UNEXPECTED when the selected array is not there, and E_INVALIDARG for an unknown name.
///
/// Owner:  the filter (a COM object).
/// Thread: any. Plain getters and setters take no lock; the others may wait for a connect or for one frame.
// The formatter takes these macros for expressions.
// clang-format off
#undef INTERFACE
#define INTERFACE IVxDSSource
DECLARE_INTERFACE_IID_(IVxDSSource, IUnknown, "08C27C57-0C37-4D3D-8CE1-CC88E00A57C9")
{
#ifndef __cplusplus
    /* In C the methods of IUnknown stand in the table themselves. */
    STDMETHOD(QueryInterface)(THIS_ REFIID riid, void** object) PURE;
    STDMETHOD_(ULONG, AddRef)(THIS) PURE;
    STDMETHOD_(ULONG, Release)(THIS) PURE;
#endif

    /// Reads "role": 0 controller and data receiver, 1 unicast receiver, 2 multicast receiver.
    STDMETHOD(GetRole)(THIS_ UINT* role) PURE;

    /// Writes "role"; every value is stored.
    STDMETHOD(SetRole)(THIS_ UINT role) PURE;

    /// Reads "unicastport": the UDP port on which role 1 listens.
    STDMETHOD(GetUnicastPort)(THIS_ UINT* port) PURE;

    /// Writes "unicastport".
    STDMETHOD(SetUnicastPort)(THIS_ UINT port) PURE;

    /// Reads "multicastip": the dotted address of the group that role 2 joins.
    STDMETHOD(GetMulticastAddress)(THIS_ BSTR* address) PURE;

    /// Writes "multicastip".
    STDMETHOD(SetMulticastAddress)(THIS_ BSTR address) PURE;

    /// Reads "multicastport".
    STDMETHOD(GetMulticastPort)(THIS_ UINT* port) PURE;

    /// Writes "multicastport".
    STDMETHOD(SetMulticastPort)(THIS_ UINT port) PURE;

    /// Reads "diagnosticsenabled".
    STDMETHOD(GetDiagnosticsEnabled)(THIS_ BOOL* enabled) PURE;

    /// Writes "diagnosticsenabled"; takes effect with the next frame.
    STDMETHOD(SetDiagnosticsEnabled)(THIS_ BOOL enabled) PURE;

    /// Reads "deviceid": the camera to open.
    STDMETHOD(GetDeviceId)(THIS_ BSTR* deviceId) PURE;

    /// Writes "deviceid": MAC address, dotted IP address, serial number or user-defined name.
    STDMETHOD(SetDeviceId)(THIS_ BSTR deviceId) PURE;

    /// Stops acquisition, closes the stream and gives the camera back.
    STDMETHOD(Disconnect)(THIS) PURE;

    /// Applies the connection settings: connects, or reconnects where they changed.
    STDMETHOD(Connect)(THIS) PURE;

    /// Number of entries of the camera's "SourceSelector"; 0 without a camera or without the feature.
    STDMETHOD(GetSourceCount)(THIS_ UINT* count) PURE;

    /// Name of one "SourceSelector" entry; empty without a camera or without the feature. E_INVALIDARG past the
    /// last entry.
    STDMETHOD(GetSourceName)(THIS_ UINT index, BSTR* name) PURE;

    /// Reads "paramsource".
    STDMETHOD(GetParamSource)(THIS_ BSTR* source) PURE;

    /// Writes "paramsource": the "SourceSelector" entry to select after connecting; empty leaves the camera's.
    STDMETHOD(SetParamSource)(THIS_ BSTR source) PURE;

    /// Reads "paramchannel".
    STDMETHOD(GetParamChannel)(THIS_ UINT* channel) PURE;

    /// Writes "paramchannel": the stream channel to open, from 0.
    STDMETHOD(SetParamChannel)(THIS_ UINT channel) PURE;

    /// Reads "buffercount".
    STDMETHOD(GetBufferCount)(THIS_ UINT* count) PURE;

    /// Writes "buffercount": number of buffers in the pipeline, used at the next connect.
    STDMETHOD(SetBufferCount)(THIS_ UINT count) PURE;

    /// Reads "defaultbuffersize".
    STDMETHOD(GetDefaultBufferSize)(THIS_ UINT* bytes) PURE;

    /// Writes "defaultbuffersize", in bytes: used where the camera's payload size is not known.
    STDMETHOD(SetDefaultBufferSize)(THIS_ UINT bytes) PURE;

    /// Reads "dropthreshold".
    STDMETHOD(GetDropThreshold)(THIS_ UINT* threshold) PURE;

    /// Writes "dropthreshold": with more buffers than this waiting, good ones are skipped; 0 never skips.
    STDMETHOD(SetDropThreshold)(THIS_ UINT threshold) PURE;

    /// Width of the last image received, in pixels; 0 before the first.
    STDMETHOD(GetWidth)(THIS_ UINT* widthPx) PURE;

    /// Writes the camera's "Width"; E_FAIL without a camera or when it refuses.
    STDMETHOD(SetWidth)(THIS_ INT widthPx) PURE;

    /// Height of the last image received, in pixels; 0 before the first.
    STDMETHOD(GetHeight)(THIS_ UINT* heightPx) PURE;

    /// Writes the camera's "Height"; E_FAIL without a camera or when it refuses.
    STDMETHOD(SetHeight)(THIS_ INT heightPx) PURE;

    /// Reads which features the methods below work on: 0 the link's, 1 the camera's, 2 the stream receiver's.
    STDMETHOD(GetParameterArray)(THIS_ UINT* selector) PURE;

    /// 0 to 2; E_FAIL for anything larger, and no change.
    STDMETHOD(SetParameterArray)(THIS_ UINT selector) PURE;

    /// Whether the selected features are there now.
    STDMETHOD(IsParameterArrayAvailable)(THIS_ BOOL* available) PURE;

    /// Number of features in the selected array.
    STDMETHOD(GetParameterCount)(THIS_ UINT* count) PURE;

    /// Name of the feature at an index, from 0; E_INVALIDARG past the last.
    STDMETHOD(GetParameterName)(THIS_ UINT index, BSTR* name) PURE;

    /// The feature's category path.
    STDMETHOD(GetParameterCategory)(THIS_ BSTR name, BSTR* category) PURE;

    /// The feature's value as text.
    STDMETHOD(GetParameterValue)(THIS_ BSTR name, BSTR* value) PURE;

    /// Sets the feature from text; on E_FAIL the camera's own description is in error, if it gave one.
    STDMETHOD(SetParameterValue)(THIS_ BSTR name, BSTR value, BSTR* error) PURE;

    /// "Integer", "Enum", "Boolean", "String", "Command", "Float" or "Register".
    STDMETHOD(GetParameterType)(THIS_ BSTR name, BSTR* type) PURE;

    /// The feature's access flags now.
    STDMETHOD(GetParameterAccess)(THIS_ BSTR name, BOOL* available, BOOL* readable, BOOL* writable) PURE;

    /// Runs a command feature; E_INVALIDARG for any other. On E_FAIL the camera's own description is in error,
    /// an empty text if it gave none; else error is untouched.
    STDMETHOD(ExecuteCommand)(THIS_ BSTR name, BSTR* error) PURE;

    /// Number of entries of an enumeration, 2 for a Boolean, 0 for everything else.
    STDMETHOD(GetEnumEntryCount)(THIS_ BSTR name, UINT* count) PURE;

    /// Name of an entry; a Boolean has "true" (0) and "false" (1).
    STDMETHOD(GetEnumEntryName)(THIS_ BSTR name, UINT index, BSTR* entry) PURE;

    /// 0 beginner, 1 expert, 2 guru, 3 invisible.
    STDMETHOD(GetParameterVisibility)(THIS_ BSTR name, UINT* visibility) PURE;

    /// Reads "outputpixeltype": 0 RGB, 1 YUV 4:2:2.
    STDMETHOD(GetOutputPixelType)(THIS_ UINT* type) PURE;

    /// 0 or 1, else E_INVALIDARG; disconnects, so that the next Connect uses it.
    STDMETHOD(SetOutputPixelType)(THIS_ UINT type) PURE;

    /// Reads "kernelsize".
    STDMETHOD(GetKernelSize)(THIS_ UINT* size) PURE;

    /// Aperture of the median filter: 0 (off), 3 or 5, else E_INVALIDARG.
    STDMETHOD(SetKernelSize)(THIS_ INT size) PURE;

    /// Reads "zoomvalue".
    STDMETHOD(GetZoomValue)(THIS_ UINT* zoom) PURE;

    /// Digital zoom from 0 (whole image) to 9 (central tenth); values above 10 are stored as 10.
    STDMETHOD(SetZoomValue)(THIS_ INT zoom) PURE;

    /// Reads the requested size of the delivered picture; 0 x 0 = that of the camera.
    STDMETHOD(GetOutputSize)(THIS_ UINT* widthPx, UINT* heightPx) PURE;

    /// Both at least 1, else E_FAIL.
    STDMETHOD(SetOutputSize)(THIS_ INT widthPx, INT heightPx) PURE;

    /// Saves the settings as this user's default. Returns 0, or 1 (a success code) when the registry cannot be
    /// written.
    STDMETHOD(SaveDefault)(THIS) PURE;

    /// Deletes this user's default. Returns 0, or 1 when the registry cannot be opened.
    STDMETHOD(ClearDefault)(THIS) PURE;

    /// One line about the saved default; empty when there is none.
    STDMETHOD(GetDefaultSummary)(THIS_ BSTR* summary) PURE;
};
#undef INTERFACE
// clang-format on

/* {08C27C57-0C37-4D3D-8CE1-CC88E00A57C9} */
#ifdef __cplusplus
inline constexpr GUID IID_IVxDSSource = {
    0x08C27C57, 0x0C37, 0x4D3D, {0x8C, 0xE1, 0xCC, 0x88, 0xE0, 0x0A, 0x57, 0xC9}};
#else
static const GUID IID_IVxDSSource = {
    0x08C27C57, 0x0C37, 0x4D3D, {0x8C, 0xE1, 0xCC, 0x88, 0xE0, 0x0A, 0x57, 0xC9}};
#endif
