#include "system/GraphFile.h"

#include <objidl.h>
#include <ole2.h>

using vxgrab::ComPtr;

namespace {

constexpr wchar_t kStreamName[] = L"ActiveMovieGraph"; // fixed by graph editors

} // namespace

HRESULT SaveGraph(const std::filesystem::path& file, IBaseFilter& source, const GUID& subtype)
{
    ComPtr<IStorage> storage;
    HRESULT result = ::StgCreateDocfile(file.c_str(),
                                        STGM_CREATE | STGM_TRANSACTED | STGM_READWRITE | STGM_SHARE_EXCLUSIVE,
                                        0, storage.Put());
    ComPtr<IStream> stream;
    if (SUCCEEDED(result))
        result = storage->CreateStream(kStreamName, STGM_WRITE | STGM_CREATE | STGM_SHARE_EXCLUSIVE, 0, 0,
                                       stream.Put());
    ComPtr<IPersistStream> persistence;
    if (SUCCEEDED(result))
        result = ComPtr<IBaseFilter>::Share(&source).Query(IID_IPersistStream, persistence);
    if (SUCCEEDED(result))
        result = ::OleSaveToStream(persistence.Get(), stream.Get());
    if (SUCCEEDED(result))
        result = stream->Write(&subtype, sizeof(subtype), nullptr);
    if (SUCCEEDED(result))
        result = stream->Commit(STGC_DEFAULT);
    return SUCCEEDED(result) ? storage->Commit(STGC_DEFAULT) : result;
}

HRESULT LoadGraph(const std::filesystem::path& file, ComPtr<IBaseFilter>& source, GUID& subtype)
{
    ComPtr<IStorage> storage;
    HRESULT result =
        ::StgOpenStorage(file.c_str(), nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, nullptr, 0, storage.Put());
    ComPtr<IStream> stream;
    if (SUCCEEDED(result))
        result = storage->OpenStream(kStreamName, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, stream.Put());
    if (SUCCEEDED(result))
        result = ::OleLoadFromStream(stream.Get(), IID_IBaseFilter, source.PutVoid());
    ULONG bytes = 0;
    if (SUCCEEDED(result))
        result = stream->Read(&subtype, sizeof(subtype), &bytes);
    return SUCCEEDED(result) && bytes != sizeof(subtype) ? STG_E_READFAULT : result;
}
