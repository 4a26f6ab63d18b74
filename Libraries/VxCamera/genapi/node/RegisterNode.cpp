#include "VxCamera/genapi/node/RegisterNode.h"

#include <algorithm>

#include "VxCamera/genapi/node/NodeWords.h"
#include "VxCamera/genapi/node/TextForm.h"
#include "VxCamera/genapi/xml/NumberText.h"

namespace genapi {

namespace {

// Chosen: far above the look-up tables and file buffers of cameras.
constexpr std::int64_t kMaxLength = 16 * 1024 * 1024;

constexpr WideAddress kAddressLimit = WideAddress{1} << 64;

} // namespace

RegisterNode::Place RegisterNode::LastPlace() const
{
    const bool isDevice = m_port == nullptr || m_port->IsDevice();
    return {.port = isDevice ? nullptr : m_port, .address = m_lastAddress, .length = m_bytes.size()};
}

void RegisterNode::PollingTime::Shorten(std::uint32_t other, Node* otherBlock)
{
    if (other == 0 || (milliseconds != 0 && milliseconds <= other))
        return;
    milliseconds = other;
    block = otherBlock;
}

void RegisterNode::PollAtLeastEvery(std::uint32_t milliseconds, Node* block)
{
    PollingTime& time = block == nullptr ? m_polling : m_blockedPolling;
    time.Shorten(milliseconds, block);
}

void RegisterNode::SetDefaultPort(PortNode& port)
{
    if (m_port == nullptr)
        m_port = &port;
    // A port that only leads to the camera changes nothing: the way without it is shorter.
    if (m_port->IsPlainDevice())
        m_port = nullptr;
}

void RegisterNode::Apply(const NodeProperty& property)
{
    if (ApplyAddress(property))
        return;
    switch (property.element) {
    case Element::Length:
        if (const auto length = IntegerOf(property)) {
            if (*length < 1 || *length > kMaxLength)
                SetFault("its length of " + std::to_string(*length) + " bytes is not from 1 to " +
                         std::to_string(kMaxLength));
            else
                m_length = static_cast<std::size_t>(*length);
        }
        return;
    case Element::PLength:
        m_lengthNode = property.target;
        return;
    case Element::PPort:
        m_port = dynamic_cast<PortNode*>(property.target);
        if (m_port == nullptr && property.target != nullptr)
            SetFault("its pPort names the node \"" + std::string(property.text) + "\", which is no port");
        return;
    case Element::AccessMode:
        m_access = ParseAccessMode(property.text).value_or(m_access);
        return;
    case Element::Cachable:
        if (property.text == "NoCache")
            m_caching = CachingMode::NoCache;
        else
            m_caching = property.text == "WriteAround" ? CachingMode::WriteAround : CachingMode::WriteThrough;
        return;
    case Element::Endianess:
        m_order = property.text == "BigEndian" ? ByteOrder::BigEndian : ByteOrder::LittleEndian;
        return;
    default:
        return;
    }
}

bool RegisterNode::ApplyAddress(const NodeProperty& property)
{
    switch (property.element) {
    case Element::Address:
        if (const auto address = IntegerOf(property)) {
            // A minus sign makes it negative; anything else is a pattern of 64 bits without sign.
            const bool isNegative = property.text.starts_with('-');
            m_address +=
                isNegative ? WideAddress{*address} : WideAddress{static_cast<std::uint64_t>(*address)};
        }
        return true;
    case Element::PAddress:
    case Element::AddressKnife:
        m_terms.push_back({.node = property.target});
        return true;
    case Element::PIndex:
    case Element::PIndexOffset:
        AddIndex(property);
        return true;
    default:
        return false;
    }
}

void RegisterNode::AddIndex(const NodeProperty& property)
{
    AddressTerm term{.node = property.target, .factorNode = property.argumentTarget};
    if (property.element == Element::PIndex) {
        const auto offset = ParseInteger(property.argument);
        if (!offset && !property.argument.empty())
            SetFault("the Offset \"" + std::string(property.argument) + "\" of its pIndex is no integer");
        term.factor = offset.value_or(1);
        term.isFactorLength = property.argument.empty();
    }
    m_terms.push_back(term);
}

void RegisterNode::Finish()
{
    if (!m_length && m_lengthNode == nullptr)
        SetFault("it has no Length");
    PollAtLeastEvery(PollingMs(), PollingBlock());
}

AccessMode RegisterNode::OwnAccess()
{
    return m_port == nullptr ? m_access : Combine(m_access, m_port->Access());
}

VxExpected<std::size_t> RegisterNode::Length()
{
    if (m_length)
        return *m_length;
    const auto length = m_lengthNode->GetInteger();
    if (!length)
        return length.Error();
    if (*length < 1 || *length > kMaxLength)
        return Error(VxError::InvalidData, "its length of " + std::to_string(*length) +
                                               " bytes is not from 1 to " + std::to_string(kMaxLength));
    return static_cast<std::size_t>(*length);
}

ByteOrder RegisterNode::Order(std::size_t length) const
{
    constexpr std::size_t kLegacyLength = 4;
    const bool isDevice = m_port == nullptr || m_port->IsDevice();
    if (isDevice && Context().Order() == WordOrder::FourBytesBigEndian && length == kLegacyLength)
        return ByteOrder::BigEndian;
    if (m_port == nullptr || !m_port->SwapsBytes())
        return m_order;
    return m_order == ByteOrder::BigEndian ? ByteOrder::LittleEndian : ByteOrder::BigEndian;
}

VxExpected<WideAddress> RegisterNode::Address(std::size_t length)
{
    WideAddress address = m_address;
    for (const AddressTerm& term : m_terms) {
        const auto value = TermValue(term, length);
        if (!value)
            return value.Error();
        address += *value; // no overflow: the sum so far has 66 bits and a product of two integers 127
        if (address < -kAddressLimit || address > kAddressLimit)
            return Error(VxError::InvalidData,
                         "its address lies outside of the camera's 64-bit register space");
    }
    return address;
}

VxExpected<WideAddress> RegisterNode::TermValue(const AddressTerm& term, std::size_t length)
{
    const auto value = term.node->GetInteger();
    if (!value)
        return value.Error();
    if (term.isFactorLength)
        return WideAddress{*value} * static_cast<WideAddress>(length);
    if (term.factorNode == nullptr)
        return WideAddress{*value} * term.factor;
    const auto factor = term.factorNode->GetInteger();
    if (!factor)
        return factor.Error();
    return WideAddress{*value} * *factor;
}

bool RegisterNode::MayKeep() const
{
    const bool isPolled = m_polling.milliseconds != 0 || m_blockedPolling.milliseconds != 0;
    return Context().IsCaching() && m_caching != CachingMode::NoCache &&
           (!isPolled || Context().Clock() != nullptr);
}

void RegisterNode::Keep()
{
    m_isCached = MayKeep();
    if (m_isCached && Context().Clock() != nullptr &&
        (m_polling.milliseconds != 0 || m_blockedPolling.milliseconds != 0))
        m_readAt = Context().Clock()->Now();
}

bool RegisterNode::IsOver(const PollingTime& time, IVxClock::Time now) const
{
    if (time.milliseconds == 0 || now - m_readAt < std::chrono::milliseconds(time.milliseconds))
        return false;
    return time.block == nullptr || time.block->GetInteger().ValueOr(0) == 0;
}

bool RegisterNode::IsFresh()
{
    if (!m_isCached)
        return false;
    if (m_polling.milliseconds == 0 && m_blockedPolling.milliseconds == 0)
        return true;
    const IVxClock::Time now = Context().Clock()->Now(); // there is one, or the value would not be kept
    // Reading the block may come back to this very register.
    const auto isOver = [&](const PollingTime& time) { return IsOver(time, now); };
    if (isOver(m_polling) || isOver(m_blockedPolling))
        m_isCached = false;
    return m_isCached;
}

void RegisterNode::SpendFor(std::size_t bytes) const
{
    // Chosen: copying so many costs about as much as evaluating a node.
    constexpr std::size_t kBytesPerStep = 256;
    Context().Spend(bytes / kBytesPerStep);
}

VxExpected<std::span<const std::byte>> RegisterNode::Load(Freshness freshness)
{
    if (!IsReadable(m_access))
        return Error(VxError::NotReadable, "the register can only be written");
    const auto length = Length();
    if (!length)
        return length.Error();
    const auto address = Address(*length);
    if (!address)
        return address.Error();
    SpendFor(*length);
    const bool isSame = m_isCached && m_lastAddress == *address && m_bytes.size() == *length;
    if (isSame && freshness == Freshness::MayBeCached && IsFresh())
        return std::span<const std::byte>(m_bytes);
    m_isCached = false;
    m_bytes.resize(*length);
    m_lastAddress = *address;
    if (const VxResult result = ReadPort(*address, m_bytes); !result.IsOK())
        return PortError(result, "read", *address, *length);
    Keep();
    return std::span<const std::byte>(m_bytes);
}

VxResult RegisterNode::Store(std::span<const std::byte> bytes)
{
    if (!IsWritable(m_access))
        return Error(VxError::NotWritable, "the register can only be read");
    const auto address = Address(bytes.size());
    if (!address)
        return address.Error();
    m_isCached = false;
    m_bytes.assign(bytes.begin(), bytes.end());
    m_lastAddress = *address;
    const VxResult result = WritePort(*address, bytes);
    if (result.IsOK() && m_caching == CachingMode::WriteThrough && IsReadable(m_access))
        Keep();
    Context().Listener().Changed(*this);
    return result.IsOK() ? result : PortError(result, "written", *address, bytes.size());
}

VxResult RegisterNode::ReadPort(WideAddress address, std::span<std::byte> bytes)
{
    return m_port == nullptr ? PortNode::ReadDevice(Context(), address, bytes) : m_port->Read(address, bytes);
}

VxResult RegisterNode::WritePort(WideAddress address, std::span<const std::byte> bytes)
{
    return m_port == nullptr ? PortNode::WriteDevice(Context(), address, bytes)
                             : m_port->Write(address, bytes);
}

VxResult RegisterNode::PortError(const VxResult& result, std::string_view action, WideAddress address,
                                 std::size_t length) const
{
    const auto low =
        static_cast<std::int64_t>(address); // addresses beyond 64 bits are shown by their lower half
    const std::string place =
        address < 0 ? std::to_string(low) : IntegerToText(low, Representation::HexNumber);
    std::string text = std::to_string(length) + " bytes at " + place + " could not be " + std::string(action);
    if (!result.GetDescription().IsEmpty())
        text += ": " + result.GetDescription().Narrow();
    return Error(result.Code(), text);
}

VxExpected<std::vector<std::byte>> RegisterNode::DoGetBytes()
{
    const auto bytes = Load();
    if (!bytes)
        return bytes.Error();
    return std::vector<std::byte>(bytes->begin(), bytes->end());
}

VxResult RegisterNode::DoSetBytes(std::span<const std::byte> bytes)
{
    const auto length = Length();
    if (!length)
        return length.Error();
    if (bytes.size() != *length)
        return Error(VxError::InvalidParameter,
                     "it has " + std::to_string(*length) + " bytes, not " + std::to_string(bytes.size()));
    return Store(bytes);
}

} // namespace genapi
