#include "system/Buffer.h"

#include "system/OutputMessage.h"

#include <algorithm>
#include <functional>
#include <new>

namespace
{
int Refuse(char const* szFunction, int nLine)
{
    DiagnosticLine("Buffer.cpp", szFunction, nLine);
    return 1;
}
} // namespace

IBuffer::~IBuffer() = default;

CAdapta_Buffer::CAdapta_Buffer()
{
    Initialize();
}

CAdapta_Buffer::CAdapta_Buffer(unsigned char* pbyArray, unsigned long dwSize)
{
    Adopt(pbyArray, dwSize);
}

CAdapta_Buffer::CAdapta_Buffer(CAdapta_Buffer const& tOther) : IBuffer(tOther)
{
    Initialize();
    *this = tOther;
}

CAdapta_Buffer::~CAdapta_Buffer() = default;

CAdapta_Buffer& CAdapta_Buffer::operator=(CAdapta_Buffer const& tOther)
{
    if (this == &tOther || Clone(&tOther, this) != 0)
    {
        Refuse("operator=", 42);
    }
    return *this;
}

int CAdapta_Buffer::Initialize()
{
    Adopt(nullptr, 0);
    return 0;
}

void CAdapta_Buffer::Adopt(unsigned char* pbyArray, unsigned long dwSize)
{
    m_pData = pbyArray;
    m_dwSize = dwSize;
    m_dwPosition = 0;
}

int CAdapta_Buffer::Create(unsigned long dwSize)
{
    unsigned char* const pbyArray = new (std::nothrow) unsigned char[dwSize];
    if (!pbyArray)
    {
        m_dwSize = 0;
        return Refuse("Create", 91);
    }
    Adopt(pbyArray, dwSize);
    return 0;
}

int CAdapta_Buffer::Recreate(unsigned long dwSize)
{
    Destroy();
    return Create(dwSize);
}

int CAdapta_Buffer::Clone(IBuffer* pTarget) const
{
    return pTarget == this ? Refuse("Clone", 137) : Clone(this, pTarget);
}

int CAdapta_Buffer::Clone(IBuffer const* pSource, IBuffer* pTarget) const
{
    if (!pTarget)
    {
        return Refuse("Clone", 156);
    }
    pTarget->Destroy();
    if (!pSource || pSource->BufferNull())
    {
        return Refuse("Clone", 166);
    }
    const unsigned long dwLength = pSource->Length();
    if (dwLength == 0)
    {
        return Refuse("Clone", 176);
    }
    if (pTarget->Create(dwLength) != 0)
    {
        return Refuse("Clone", 183);
    }
    unsigned char const* const pbySource = pSource->Buffer();
    unsigned char* const pbyTarget = pTarget->Buffer();
    if (!pbySource || !pbyTarget)
    {
        return Refuse("Clone", 194);
    }
    std::copy_n(pbySource, dwLength, pbyTarget);
    return 0;
}

int CAdapta_Buffer::Destroy()
{
    delete[] m_pData;
    return Initialize();
}

bool CAdapta_Buffer::BufferNull() const
{
    return !m_pData;
}

int CAdapta_Buffer::CheckValid(unsigned char const* pbyPointer) const
{
    if (!pbyPointer)
    {
        return Refuse("CheckValid", 246);
    }
    const std::less<> IsBefore; // orders also what points into different arrays
    if (IsBefore(pbyPointer, m_pData) || IsBefore(m_pData + m_dwSize, pbyPointer))
    {
        return Refuse("CheckValid", 253);
    }
    return 0;
}

unsigned char* CAdapta_Buffer::Buffer() const
{
    return m_pData;
}

unsigned long CAdapta_Buffer::Length() const
{
    return m_dwSize;
}

int CAdapta_Buffer::Consign(unsigned char* pbyArray, unsigned long dwSize)
{
    Destroy();
    Adopt(pbyArray, dwSize);
    return 0;
}

int CAdapta_Buffer::Copy(unsigned char const* pbySource, unsigned long dwCount)
{
    if (!m_pData || dwCount > m_dwSize)
    {
        return Refuse("Copy", 365);
    }
    std::copy_n(pbySource, dwCount, m_pData);
    return 0;
}

int CAdapta_Buffer::Paste(unsigned char* pbyTarget, unsigned long dwCount)
{
    if (!m_pData || dwCount > m_dwSize)
    {
        return Refuse("Paste", 389);
    }
    std::copy_n(m_pData, dwCount, pbyTarget);
    return 0;
}

int CAdapta_Buffer::SetPosition(unsigned long dwPosition)
{
    m_dwPosition = dwPosition;
    return 0;
}

unsigned long CAdapta_Buffer::Position() const
{
    return m_dwPosition;
}

int CAdapta_Buffer::ResetLength()
{
    return SetPosition(0);
}

bool CAdapta_Buffer::Compare(CAdapta_Buffer const& tOther) const
{
    if (!tOther.m_pData || !m_pData)
    {
        Refuse("Compare", 430);
        return false;
    }
    const unsigned long dwLength = tOther.Length();
    return dwLength != 0 && dwLength == m_dwSize && std::equal(m_pData, m_pData + m_dwSize, tOther.m_pData);
}

CAdapta_Buffer::operator unsigned char*() const
{
    return m_pData;
}

CAdapta_Buffer::operator unsigned long() const
{
    return m_dwSize;
}

unsigned char& CAdapta_Buffer::operator[](int nIndex)
{
    return m_pData[nIndex];
}

unsigned char const& CAdapta_Buffer::operator[](int nIndex) const
{
    return m_pData[nIndex];
}

bool CAdapta_Buffer::operator==(CAdapta_Buffer const& tOther) const
{
    return Compare(tOther);
}
