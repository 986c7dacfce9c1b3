#pragma once

#include "Export.h"

/// A block of bytes whose size can change. An application may hand its own kind to CAdapta_Buffer's clones, so the
/// order of the operations never changes. Results: 0 done, 1 refused.
/// @ingroup classes
class TESSARO_API IBuffer
{
public:
    /// A new array, not cleared; the position is 0. An array held before isn't released: see Recreate. Out of memory:
    /// 1, the length is 0, the old array still held.
    virtual int Create(unsigned long dwSize) = 0;
    /// Destroy, then Create.
    virtual int Recreate(unsigned long dwSize) = 0;
    /// Copies into pTarget, which loses what it held also when this fails. Refused for this very buffer.
    virtual int Clone(IBuffer* pTarget) const = 0;
    /// Releases the array; 0, also when there is none.
    virtual int Destroy() = 0;
    /// Whether there is no array.
    virtual bool BufferNull() const = 0;
    /// 0 for an address in the array or one past its end.
    virtual int CheckValid(unsigned char const* pbyPointer) const = 0;
    /// The array, null when there is none; valid until it changes.
    virtual unsigned char* Buffer() const = 0;
    /// Bytes in the array.
    virtual unsigned long Length() const = 0;
    /// Takes over an array in place of the present one, which is released: it must be another.
    virtual int Consign(unsigned char* pbyArray, unsigned long dwSize) = 0;
    /// Copies into the start of the array. Refused when there is none or it is too short.
    virtual int Copy(unsigned char const* pbySource, unsigned long dwCount) = 0;
    /// Copies the start of the array out. Refused when there is none or it is too short.
    virtual int Paste(unsigned char* pbyTarget, unsigned long dwCount) = 0;
    virtual ~IBuffer();
};

/// The block as an array on the heap, with a position that the caller keeps.
///
/// Owns its array from Create or Consign until Destroy; the destructor releases nothing. Arrays are made by new[] and
/// released by delete[], also those handed over. Whatever is refused writes a diagnostic line; nothing is thrown. One
/// thread at a time.
/// @ingroup classes
class TESSARO_API CAdapta_Buffer : public IBuffer
{
public:
    CAdapta_Buffer();
    CAdapta_Buffer(unsigned char* pbyArray, unsigned long dwSize); ///< takes the array over
    CAdapta_Buffer(CAdapta_Buffer const& tOther);                  ///< a deep copy; empty, with lines, when it fails
    ~CAdapta_Buffer() override;
    /// A deep copy. When it fails, a line more says so and this buffer is empty; onto itself it changes nothing but
    /// writes that line.
    CAdapta_Buffer& operator=(CAdapta_Buffer const& tOther);

    int Initialize(); ///< forgets the array without releasing it
    int Create(unsigned long dwSize) override;
    int Recreate(unsigned long dwSize) override;
    int Clone(IBuffer* pTarget) const override;
    int Clone(IBuffer const* pSource, IBuffer* pTarget) const; ///< the same from pSource
    int Destroy() override;
    bool BufferNull() const override;
    int CheckValid(unsigned char const* pbyPointer) const override;
    unsigned char* Buffer() const override;
    unsigned long Length() const override;
    int Consign(unsigned char* pbyArray, unsigned long dwSize) override;
    int Copy(unsigned char const* pbySource, unsigned long dwCount) override;
    int Paste(unsigned char* pbyTarget, unsigned long dwCount) override;

    // NOLINTBEGIN(google-explicit-constructor): a buffer stands for its array, and for its length.
    operator unsigned char*() const; ///< as Buffer
    operator unsigned long() const;  ///< as Length
    // NOLINTEND(google-explicit-constructor)
    unsigned char& operator[](int nIndex);             ///< unchecked
    unsigned char const& operator[](int nIndex) const; ///< unchecked

    int SetPosition(unsigned long dwPosition); ///< unchecked
    unsigned long Position() const;            ///< what SetPosition set; 0 with a new array
    int ResetLength();                         ///< the position becomes 0
    /// The same bytes, and at least one. False, with a line, when either has no array.
    bool Compare(CAdapta_Buffer const& tOther) const;
    bool operator==(CAdapta_Buffer const& tOther) const; ///< as Compare

private:
    [[gnu::visibility("hidden")]] void Adopt(unsigned char* pbyArray, unsigned long dwSize);

    unsigned char* m_pData;
    unsigned long m_dwSize;
    unsigned long m_dwPosition;
};
