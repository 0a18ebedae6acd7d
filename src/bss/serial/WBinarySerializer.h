// WBinarySerializer: persistent objects in a compact image in memory, to be stored in a file or a field or to
// be sent.
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
// Pass bytes as a std::string, or as a pointer with a size: a literal alone would be converted to bool.
//
// The image has no header and no types: the reader makes the calls of the writer, in the same order. The
// constructor's flag selects whether labels are stored; they are never compared. The bytes are the same on
// every system (docs/binary-format.md): integers of 32 bits, also for long, and UTF-16.
//
// One stream serves both directions, with a position for each.
//
// Reading past the end is not a failure. The variable keeps its value or receives a part of the data. After
// that, reads leave single values unchanged and make arrays and vectors empty, MoreToRead returns false, and
// every write throws. A count in the image that is negative, or exceeds the rest of the image by more than 16
// MiB, throws std::bad_alloc before memory is allocated. A smaller excess gives zeros.
//
// Failures. WNESerializerError, whose text has the label, is thrown for values that the image can't hold,
// before anything is written: a long beyond 32 bits, a negative count, a null pointer with a count.
// std::length_error is thrown for a write after a read has failed, for a stream in a failed state, and when
// an image reaches 4 GiB.
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

/// Writes and reads the binary image.
class KRTBSS_API WBinarySerializer : public WSerializer {
public:
    // `bLabels`: labels are stored. Reading and writing begin at position 0.

    /// Makes a stream with a copy of the data. The number of bytes written starts at its length.
    WBinarySerializer(const std::string& data, bool bLabels);
    /// Makes a stream of `size` zero bytes, which writing replaces.
    WBinarySerializer(unsigned int size, bool bLabels);
    /// Makes a stream with a copy of `size` bytes; an empty stream if `data` is null or `size` is not
    /// positive.
    WBinarySerializer(const char* data, long size, bool bLabels);
    /// Makes an empty stream. In sizing mode bytes are counted and not stored.
    WBinarySerializer(bool bIsSizing, bool bLabels);
    ~WBinarySerializer() override;

    using WSerializer::Read;
    using WSerializer::Write;

    // The operations of WSerializer. Each item is a label, followed by the bytes that the comment gives.

    /// See WSerializer::Insert. Writes a count and a wide-text item without a label for each element.
    void Insert(const std::wstring& label, const std::vector<std::wstring>& values) override;
    /// See WSerializer::Insert. Writes a count and 1 byte for each element.
    void Insert(const std::wstring& label, const std::vector<bool>& values) override;
    /// See WSerializer::Insert. Writes a count and 8 bytes for each element.
    void Insert(const std::wstring& label, const std::vector<double>& values) override;
    /// See WSerializer::Insert. Writes a count and 4 bytes for each element.
    void Insert(const std::wstring& label, const std::vector<long>& values) override;
    /// See WSerializer::Insert. Writes a count and 4 bytes for each element.
    void Insert(const std::wstring& label, const std::vector<int>& values) override;
    /// See WSerializer::Insert. Writes a count and 2 bytes for each UTF-16 code unit.
    void Insert(const std::wstring& label, const std::wstring& value) override;
    /// See WSerializer::Insert. Writes a count and the bytes.
    void Insert(const std::wstring& label, const std::string& value) override;
    /// See WSerializer::Insert. Writes the same bytes as for a vector of wide texts.
    void Insert(const std::wstring& label, const std::wstring* const data, long count) override;
    /// See WSerializer::Insert. Writes a count and a narrow-text item without a label for each element.
    void Insert(const std::wstring& label, const std::string* const data, long count) override;
    /// See WSerializer::Insert. Writes a count and 8 bytes for each element.
    void Insert(const std::wstring& label, const double* const data, long count) override;
    /// See WSerializer::Insert. Writes a count and 4 bytes for each element.
    void Insert(const std::wstring& label, const float* const data, long count) override;
    /// See WSerializer::Insert. Writes a count and 4 bytes for each element.
    void Insert(const std::wstring& label, const long* const data, long count) override;
    /// See WSerializer::Insert. Writes a count and the bytes.
    void Insert(const std::wstring& label, const unsigned char* const data, long count) override;
    /// See WSerializer::Insert. Writes nine fields of 4 bytes.
    void Insert(const std::wstring& label, struct tm value) override;
    /// See WSerializer::Insert. Writes 16 bytes.
    void Insert(const std::wstring& label, GUID value) override;
    /// See WSerializer::Insert. Writes 8 bytes.
    void Insert(const std::wstring& label, double value) override;
    /// See WSerializer::Insert. Writes 4 bytes.
    void Insert(const std::wstring& label, float value) override;
    /// See WSerializer::Insert. Writes 4 bytes.
    void Insert(const std::wstring& label, long value) override;
    /// See WSerializer::Insert. Writes 2 bytes.
    void Insert(const std::wstring& label, short value) override;
    /// See WSerializer::Insert. Writes 1 byte.
    void Insert(const std::wstring& label, bool value) override;
    /// See WSerializer::Insert. Writes a count and 4 bytes for each element: single precision.
    void InsertF(const std::wstring& label, const std::vector<double>& values) override;

    // Each operation skips a label and reads the bytes of its Insert. Throws std::bad_alloc for a count that
    // the image can't have.

    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, std::vector<std::wstring>& values) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, std::vector<bool>& values) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, std::vector<double>& values) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, std::vector<long>& values) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, std::vector<int>& values) override;
    /// See WSerializer::Retrieve. An empty text in the image leaves `value` unchanged (kept for
    /// compatibility).
    void Retrieve(const std::wstring& label, std::wstring& value) override;
    /// See WSerializer::Retrieve. An empty text in the image leaves `value` unchanged (kept for
    /// compatibility).
    void Retrieve(const std::wstring& label, std::string& value) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, std::wstring*& data, long& count) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, std::string*& data, long& count) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, double*& data, long& count) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, float*& data, long& count) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, long*& data, long& count) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, unsigned char*& data, long& count) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, struct tm& value) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, GUID& value) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, double& value) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, float& value) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, long& value) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, short& value) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& label, bool& value) override;
    /// See WSerializer::RetrieveF.
    void RetrieveF(const std::wstring& label, std::vector<double>& values) override;

    // Further operations, in the virtual table after those of the base.

    /// Writes a count and 4 bytes for each element.
    virtual void Insert(const std::wstring& label, const std::list<int>& values);
    /// Writes a count and a narrow-text item without a label for each element.
    virtual void Insert(const std::wstring& label, const std::vector<std::string>& values);
    /// Writes a count and 4 bytes for each element.
    virtual void Insert(const std::wstring& label, const int* const data, long count);
    /// Writes a count and 2 bytes for each element.
    virtual void Insert(const std::wstring& label, const short* const data, long count);
    /// Writes a count and 1 byte for each element.
    virtual void Insert(const std::wstring& label, const bool* const data, long count);
    /// Writes 4 bytes.
    virtual void Insert(const std::wstring& label, int value);
    /// Writes 2 bytes.
    virtual void Insert(const std::wstring& label, unsigned short value);

    /// Reads a list of integers.
    virtual void Retrieve(const std::wstring& label, std::list<int>& values);
    /// Reads a vector of narrow texts.
    virtual void Retrieve(const std::wstring& label, std::vector<std::string>& values);
    /// Reads an array of integers. The caller owns the array (`new[]`).
    virtual void Retrieve(const std::wstring& label, int*& data, long& count);
    /// Reads an array of integers of 16 bits. The caller owns the array (`new[]`).
    virtual void Retrieve(const std::wstring& label, short*& data, long& count);
    /// Reads an array of flags. The caller owns the array (`new[]`).
    virtual void Retrieve(const std::wstring& label, bool*& data, long& count);
    /// Reads an integer of 32 bits.
    virtual void Retrieve(const std::wstring& label, int& value);
    /// Reads an unsigned integer of 16 bits.
    virtual void Retrieve(const std::wstring& label, unsigned short& value);

    /// Writes `size` bytes without a count. Throws WNESerializerError if `data` is null and `size` is not 0.
    void InsertEx(const std::wstring& label, void* const data, unsigned int size);
    /// Reads `size` bytes that InsertEx wrote.
    /// REQUIRES: `data` has room for `size` bytes.
    void RetrieveEx(const std::wstring& label, void* data, unsigned int size);

    /// Returns a copy of the whole stream, including bytes that writing has not reached.
    std::string GetBuffer() const { return m_buffer; }
    /// Returns the number of bytes written in sizing mode, otherwise the length of the stream.
    unsigned int GetBufferSize() const;
    /// Returns the position of writing: the number of bytes written outside sizing mode.
    unsigned int Size() const { return static_cast<unsigned int>(m_nWritePosition); }
    /// Returns false once a read has failed. Test it after a read, not before.
    bool MoreToRead() const { return !m_bEnd && !m_bBad; }
    /// Copies the stream to `target`, which is not moved.
    /// REQUIRES: `target` has room for GetBuffer().size() bytes.
    void WriteToBuffer(unsigned char*& target) const;
    /// Returns true in sizing mode.
    bool GetIsSizing() const { return m_bIsSizing; }
    /// Switches sizing mode on or off. The number of bytes written is not reset.
    void SetIsSizing(bool isSizing) { m_bIsSizing = isSizing; }

protected:
    /// Text of the std::length_error of a read.
    static constexpr char m_sErrorRead[] = "Error reading from an invalid buffer";
    /// Text of the std::length_error of a write.
    static constexpr char m_sErrorWrite[] = "Error writing to an invalid buffer";

    /// Writes `size` bytes at the position of writing, or counts them in sizing mode. Returns `size`.
    /// Throws std::length_error; see the top of this header.
    unsigned int Write(void* const data, unsigned int size);
    /// Reads `size` bytes. Returns `size`, or 0 at the end of the stream; `target` then holds the bytes that
    /// were left. Throws std::length_error for a stream in a failed state.
    unsigned int Read(void* target, unsigned int size);
    /// Writes the label, or an empty one if labels are not stored. Returns the number of bytes.
    unsigned int WriteLabel(const std::wstring& label);
    /// Reads a label. Returns the number of bytes.
    unsigned int ReadLabel(std::wstring& label);

private:
    /// Moves the position of writing by `size` and returns the previous one. Throws std::length_error if the
    /// stream can't be written.
    std::size_t Advance(std::size_t size);
    /// Advances and returns the address of `size` bytes to be written now.
    char* Extend(std::size_t size);
    std::size_t Append(const void* data, std::size_t size);
    void AppendCount(std::size_t count);
    std::size_t Take(void* target, std::size_t size);
    std::size_t Remaining() const { return m_buffer.size() - m_nReadPosition; }
    /// Returns the count. Throws std::bad_alloc if the image can't have this many elements of `width` bytes.
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

    /// The stream.
    std::string m_buffer;
    std::size_t m_nReadPosition = 0;
    std::size_t m_nWritePosition = 0;
    /// A read has reached the end.
    bool m_bEnd = false;
    /// A write has failed.
    bool m_bBad = false;
};

} // namespace bss

#endif
