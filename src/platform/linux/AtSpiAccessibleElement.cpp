#include "AtSpiAccessibleElement.h"

#include "AtSpiTextOffsets.h"

#include <atspi/atspi.h>

namespace {

// Owns the GError an AT-SPI call may set; any error means "no answer".
class CallError
{
public:
    CallError() = default;
    ~CallError()
    {
        if (m_error)
            g_error_free(m_error);
    }
    CallError(const CallError &) = delete;
    CallError &operator=(const CallError &) = delete;

    GError **out() { return &m_error; }
    [[nodiscard]] bool failed() const { return m_error != nullptr; }

private:
    GError *m_error = nullptr;
};

template <typename Interface>
class Ref
{
public:
    explicit Ref(Interface *object)
        : m_object(object)
    {
    }
    ~Ref()
    {
        if (m_object)
            g_object_unref(m_object);
    }
    Ref(const Ref &) = delete;
    Ref &operator=(const Ref &) = delete;

    Interface *get() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

private:
    Interface *m_object;
};

std::optional<QString> textOf(AtspiText *text)
{
    CallError countError;
    const gint count = atspi_text_get_character_count(text, countError.out());
    if (countError.failed() || count < 0)
        return std::nullopt;
    CallError textError;
    gchar *utf8 = atspi_text_get_text(text, 0, count, textError.out());
    if (textError.failed() || !utf8) {
        g_free(utf8);
        return std::nullopt;
    }
    QString value = QString::fromUtf8(utf8);
    g_free(utf8);
    return value;
}

} // namespace

AtSpiAccessibleElement::AtSpiAccessibleElement(AtspiAccessible *accessible, OffsetUnit unit)
    : m_accessible(accessible)
    , m_unit(unit)
{
}

AtSpiAccessibleElement::~AtSpiAccessibleElement()
{
    g_object_unref(m_accessible);
}

std::optional<QString> AtSpiAccessibleElement::value()
{
    return text();
}

const std::optional<QString> &AtSpiAccessibleElement::text()
{
    if (!m_text) {
        const Ref<AtspiText> text(atspi_accessible_get_text_iface(m_accessible));
        m_text = text ? textOf(text.get()) : std::nullopt;
    }
    return *m_text;
}

std::optional<TextRange> AtSpiAccessibleElement::selectedRange()
{
    const Ref<AtspiText> text(atspi_accessible_get_text_iface(m_accessible));
    const std::optional<QString> &value = this->text();
    if (!text || !value)
        return std::nullopt;
    gint start = 0;
    gint end = 0;
    CallError countError;
    const gint selections = atspi_text_get_n_selections(text.get(), countError.out());
    if (!countError.failed() && selections > 0) {
        CallError rangeError;
        AtspiRange *range = atspi_text_get_selection(text.get(), 0, rangeError.out());
        if (rangeError.failed() || !range) {
            g_free(range);
            return std::nullopt;
        }
        start = std::min(range->start_offset, range->end_offset);
        end = std::max(range->start_offset, range->end_offset);
        g_free(range);
    } else {
        CallError caretError;
        start = end = atspi_text_get_caret_offset(text.get(), caretError.out());
        if (caretError.failed() || start < 0)
            return std::nullopt;
    }
    const qsizetype location = toUtf16(*value, start);
    return TextRange{location, toUtf16(*value, end) - location};
}

bool AtSpiAccessibleElement::isValueSettable()
{
    const Ref<AtspiEditableText> editable(atspi_accessible_get_editable_text_iface(m_accessible));
    if (!editable)
        return false;
    const Ref<AtspiStateSet> states(atspi_accessible_get_state_set(m_accessible));
    return states && atspi_state_set_contains(states.get(), ATSPI_STATE_EDITABLE);
}

bool AtSpiAccessibleElement::isSelectionSettable()
{
    const Ref<AtspiText> text(atspi_accessible_get_text_iface(m_accessible));
    return static_cast<bool>(text);
}

bool AtSpiAccessibleElement::replaceText(TextRange range, const QString &replacement)
{
    const Ref<AtspiEditableText> editable(atspi_accessible_get_editable_text_iface(m_accessible));
    const std::optional<QString> &value = text();
    if (!editable || !value || range.location < 0 || range.length < 0 || range.location + range.length > value->size())
        return false;
    const auto start = static_cast<gint>(fromUtf16(*value, range.location));
    const auto end = static_cast<gint>(fromUtf16(*value, range.location + range.length));
    // Qt reads the length in UTF-16 units; ATK toolkits read it in bytes of the UTF-8 text.
    const auto insert = [&](gint position, const QString &inserted) {
        const QByteArray utf8 = inserted.toUtf8();
        const auto length = static_cast<gint>(m_unit == OffsetUnit::utf16 ? inserted.size() : utf8.size());
        CallError error;
        return atspi_editable_text_insert_text(editable.get(), position, utf8.constData(), length, error.out())
            && !error.failed();
    };
    if (start != end) {
        CallError error;
        if (!atspi_editable_text_delete_text(editable.get(), start, end, error.out()) || error.failed())
            return false;
    }
    if (!replacement.isEmpty() && !insert(start, replacement)) {
        // Put back what went, so the paste that follows finds the field as the user left it.
        insert(start, value->mid(range.location, range.length));
        return false;
    }
    m_text->emplace(QString(*value).replace(range.location, range.length, replacement));
    return true;
}

bool AtSpiAccessibleElement::setSelection(TextRange range)
{
    const Ref<AtspiText> text(atspi_accessible_get_text_iface(m_accessible));
    const std::optional<QString> &value = this->text();
    if (!text || !value)
        return false;
    const auto start = static_cast<gint>(fromUtf16(*value, range.location));
    const auto end = static_cast<gint>(fromUtf16(*value, range.location + range.length));
    CallError error;
    if (start == end)
        return atspi_text_set_caret_offset(text.get(), start, error.out()) && !error.failed();
    CallError countError;
    // GTK refuses to move a selection that does not exist yet; it adds one instead.
    if (atspi_text_get_n_selections(text.get(), countError.out()) > 0 && !countError.failed())
        return atspi_text_set_selection(text.get(), 0, start, end, error.out()) && !error.failed();
    return atspi_text_add_selection(text.get(), start, end, error.out()) && !error.failed();
}

qsizetype AtSpiAccessibleElement::toUtf16(QStringView value, qsizetype offset) const
{
    return m_unit == OffsetUnit::utf16 ? offset : utf16OffsetOfCodePoint(value, offset);
}

qsizetype AtSpiAccessibleElement::fromUtf16(QStringView value, qsizetype offset) const
{
    return m_unit == OffsetUnit::utf16 ? offset : codePointOffsetOfUtf16(value, offset);
}

bool AtSpiAccessibleElement::isTerminal()
{
    CallError error;
    return atspi_accessible_get_role(m_accessible, error.out()) == ATSPI_ROLE_TERMINAL && !error.failed();
}
