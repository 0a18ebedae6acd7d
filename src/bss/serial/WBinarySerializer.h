// WBinarySerializer: persistent objects in a compact image in memory, to be stored in a file or a field or
// sent.
//
//     bss::WBinarySerializer sizing(true, false);          // counts only
//     run.Write(&sizing, 0, true);
//     std::vector<unsigned char> block(sizing.GetBufferSize());
//
//     bss::WBinarySerializer writer(false, false);
//     run.Write(&writer, 0, true);
//     unsigned char* target = block.data();
//     writer.WriteToBuffer(target);
//
//     bss::WBinarySerializer reader(writer.GetBuffer(), false);
//     copy.Read(&reader, 0, true);
//
// Bytes are passed as a std::string, or as a pointer with its size: a literal alone would be taken for a
// bool.
//
// The image has no header and no types: who reads makes the calls of who wrote, in the same order. Labels are
// stored or not, by the constructor's flag, and never compared. The bytes are the same on every system
// (docs/binary-format.md): integers of 32 bits, also for long, and UTF-16.
//
// One stream serves both directions, with a position for each. Reading past its end is no failure: the
// variable keeps its value or a part of it, and from then on every read does nothing, MoreToRead answers
// false and every write throws. A count in the image that is negative, or promises over 16 MiB more than is
// left, throws std::bad_alloc and takes no memory; a smaller lie gives zeros.
//
// WNESerializerError, naming the label, is thrown before anything is written for what the image can't hold: a
// long beyond 32 bits, a negative count, null with a count. std::length_error says that the stream is not in
// a state to be read or written, or that an image of 4 GiB is full.
//
// Threads: only DoSerialization is protected (WSerializer.h).

#ifndef BSS_SERIAL_WBINARYSERIALIZER_H
#define BSS_SERIAL_WBINARYSERIALIZER_H

#include "bss/Export.h"
#include "bss/serial/WSerializer.h"

#include <cstddef>
#include <list>
#include <string>
#include <vector>

namespace bss {

class KRTBSS_API WBinarySerializer : public WSerializer {
public:
    // `bLabels`: labels are stored. Reading and writing begin at 0.
    /// The stream holds a copy of the data; the count of bytes written begins at its length.
    WBinarySerializer(const std::string& data, bool bLabels);
    /// The stream holds that many zeros, to be written over.
    WBinarySerializer(unsigned int size, bool bLabels);
    /// Null data or no bytes: an empty stream.
    WBinarySerializer(const char* data, long size, bool bLabels);
    /// An empty stream; in sizing mode nothing is stored, only counted.
    WBinarySerializer(bool bIsSizing, bool bLabels);
    ~WBinarySerializer() override;

    using WSerializer::Read;
    using WSerializer::Write;

    void Insert(const std::wstring& label, const std::vector<std::wstring>& values) override;
    void Insert(const std::wstring& label, const std::vector<bool>& values) override;
    void Insert(const std::wstring& label, const std::vector<double>& values) override;
    void Insert(const std::wstring& label, const std::vector<long>& values) override;
    void Insert(const std::wstring& label, const std::vector<int>& values) override;
    void Insert(const std::wstring& label, const std::wstring& value) override;
    void Insert(const std::wstring& label, const std::string& value) override;
    void Insert(const std::wstring& label, const std::wstring* const data, long count) override;
    void Insert(const std::wstring& label, const std::string* const data, long count) override;
    void Insert(const std::wstring& label, const double* const data, long count) override;
    void Insert(const std::wstring& label, const float* const data, long count) override;
    void Insert(const std::wstring& label, const long* const data, long count) override;
    void Insert(const std::wstring& label, const unsigned char* const data, long count) override;
    void Insert(const std::wstring& label, struct tm value) override;
    void Insert(const std::wstring& label, GUID value) override;
    void Insert(const std::wstring& label, double value) override;
    void Insert(const std::wstring& label, float value) override;
    void Insert(const std::wstring& label, long value) override;
    void Insert(const std::wstring& label, short value) override;
    void Insert(const std::wstring& label, bool value) override;
    void InsertF(const std::wstring& label, const std::vector<double>& values) override;

    /// A string keeps what it held if the count in the image is 0.
    void Retrieve(const std::wstring& label, std::vector<std::wstring>& values) override;
    void Retrieve(const std::wstring& label, std::vector<bool>& values) override;
    void Retrieve(const std::wstring& label, std::vector<double>& values) override;
    void Retrieve(const std::wstring& label, std::vector<long>& values) override;
    void Retrieve(const std::wstring& label, std::vector<int>& values) override;
    void Retrieve(const std::wstring& label, std::wstring& value) override;
    void Retrieve(const std::wstring& label, std::string& value) override;
    void Retrieve(const std::wstring& label, std::wstring*& data, long& count) override;
    void Retrieve(const std::wstring& label, std::string*& data, long& count) override;
    void Retrieve(const std::wstring& label, double*& data, long& count) override;
    void Retrieve(const std::wstring& label, float*& data, long& count) override;
    void Retrieve(const std::wstring& label, long*& data, long& count) override;
    void Retrieve(const std::wstring& label, unsigned char*& data, long& count) override;
    void Retrieve(const std::wstring& label, struct tm& value) override;
    void Retrieve(const std::wstring& label, GUID& value) override;
    void Retrieve(const std::wstring& label, double& value) override;
    void Retrieve(const std::wstring& label, float& value) override;
    void Retrieve(const std::wstring& label, long& value) override;
    void Retrieve(const std::wstring& label, short& value) override;
    void Retrieve(const std::wstring& label, bool& value) override;
    void RetrieveF(const std::wstring& label, std::vector<double>& values) override;

    // Behind the operations of the base.
    virtual void Insert(const std::wstring& label, const std::list<int>& values);
    virtual void Insert(const std::wstring& label, const std::vector<std::string>& values);
    virtual void Insert(const std::wstring& label, const int* const data, long count);
    virtual void Insert(const std::wstring& label, const short* const data, long count);
    virtual void Insert(const std::wstring& label, const bool* const data, long count);
    virtual void Insert(const std::wstring& label, int value);
    virtual void Insert(const std::wstring& label, unsigned short value);

    virtual void Retrieve(const std::wstring& label, std::list<int>& values);
    virtual void Retrieve(const std::wstring& label, std::vector<std::string>& values);
    virtual void Retrieve(const std::wstring& label, int*& data, long& count);
    virtual void Retrieve(const std::wstring& label, short*& data, long& count);
    virtual void Retrieve(const std::wstring& label, bool*& data, long& count);
    virtual void Retrieve(const std::wstring& label, int& value);
    virtual void Retrieve(const std::wstring& label, unsigned short& value);

    /// Bytes without a count; the reader has to know how many.
    void InsertEx(const std::wstring& label, void* const data, unsigned int size);
    void RetrieveEx(const std::wstring& label, void* data, unsigned int size);

    /// The whole stream, also what was not written over.
    std::string GetBuffer() const { return m_buffer; }
    /// In sizing mode the count of bytes written, otherwise the length of the stream.
    unsigned int GetBufferSize() const;
    /// From the first position of writing to the present one.
    unsigned int Size() const { return static_cast<unsigned int>(m_nWritePosition); }
    /// False once a read has failed: to be asked after a read, not before.
    bool MoreToRead() const { return !m_bEnd && !m_bBad; }
    /// Copies the stream to `target`, which has room for it and stays where it is.
    void WriteToBuffer(unsigned char*& target) const;
    bool GetIsSizing() const { return m_bIsSizing; }
    void SetIsSizing(bool isSizing) { m_bIsSizing = isSizing; }

protected:
    static constexpr char m_sErrorRead[] = "Error reading from an invalid buffer";
    static constexpr char m_sErrorWrite[] = "Error writing to an invalid buffer";

    // Each answers the number of bytes moved; a short read moves none, though what there was stands in
    // `target`.
    unsigned int Write(void* const data, unsigned int size);
    unsigned int Read(void* target, unsigned int size);
    unsigned int WriteLabel(const std::wstring& label);
    unsigned int ReadLabel(std::wstring& label);

private:
    std::size_t Advance(std::size_t size);
    char* Extend(std::size_t size);
    std::size_t Append(const void* data, std::size_t size);
    void AppendCount(std::size_t count);
    std::size_t Take(void* target, std::size_t size);
    std::size_t Remaining() const { return m_buffer.size() - m_nReadPosition; }
    std::size_t CheckPromise(long count, std::size_t width) const;
    std::size_t TakeCount(std::size_t width);
    void SkipLabel();

    template <class Text>
    std::size_t AppendText(const Text& text);
    template <class Text>
    void TakeText(Text& text);
    template <class Text>
    void AppendStrings(const Text* data, std::size_t count);
    template <class Text>
    void TakeStrings(Text* strings, std::size_t count);
    template <class Value>
    void InsertValue(const std::wstring& label, const Value& value);
    template <class Value>
    void RetrieveValue(Value& value);
    template <class Element>
    void InsertElements(const std::wstring& label, const Element* data, std::size_t count);
    template <class Element>
    void InsertArray(const std::wstring& label, const Element* data, long count);
    template <class Element>
    void TakeElements(Element* elements, std::size_t count);
    template <class Element>
    void RetrieveArray(Element*& data, long& count);
    template <class Element>
    void RetrieveVector(std::vector<Element>& values);

    bool m_bLabels;
    bool m_bIsSizing;
    unsigned int m_nBytesRead = 0;
    unsigned int m_nBytesWritten = 0;

    // The stream
    std::string m_buffer;
    std::size_t m_nReadPosition = 0;
    std::size_t m_nWritePosition = 0;
    bool m_bEnd = false; // a read has reached the end
    bool m_bBad = false; // a write has failed
};

} // namespace bss

#endif
