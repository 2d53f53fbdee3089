#include "Apps/Wizard/MoveQuestion.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "Apps/Wizard/QtText.h"
#include "Apps/Wizard/Twips.h"
#include "Standalone/ShownPaths.h"

namespace vorlent::wizard {

namespace {

// As many as a person may read; of more only their number is told.
constexpr std::size_t kNamed = 100;

// A size to begin with, in twips.
constexpr int kQuestionWidth = 9000;
constexpr int kQuestionHeight = 4500;

std::string Written(std::size_t count) {
  return FormLocale().toString(static_cast<qulonglong>(count)).toStdString();
}

QString QuestionFor(const ImportCommand& command) {
  const std::size_t count = command.mailboxes.size();
  return Worded(count == 1 ? Phrase::MoveQuestionOfOne : Phrase::MoveQuestion,
                {WithNativePaths(command.target), Written(count)});
}

QString NamesOf(const std::vector<std::string>& mailboxes) {
  const std::size_t named = std::min(mailboxes.size(), kNamed);
  NativePaths paths;
  QStringList names;
  for (std::size_t i = 0; i < named; ++i)
    names += ToQt(paths.Of(mailboxes[i]));
  if (named < mailboxes.size()) {
    const std::size_t more = mailboxes.size() - named;
    names += Worded(more == 1 ? Phrase::AndOneMore : Phrase::AndMore, {Written(more)});
  }
  return names.join('\n');
}

}  // namespace

MoveQuestion::MoveQuestion(const ImportCommand& command, QWidget* parent) : QDialog(parent) {
  setWindowTitle(Worded(Phrase::MoveMails));
  auto* question = new QLabel(QuestionFor(command), this);
  question->setObjectName("Question");
  question->setTextFormat(Qt::PlainText);
  question->setWordWrap(true);
  auto* names = new QPlainTextEdit(NamesOf(command.mailboxes), this);
  names->setObjectName("Mailboxes");
  names->setReadOnly(true);
  names->setLineWrapMode(QPlainTextEdit::NoWrap);
  names->setTabChangesFocus(true);
  auto* move = new QPushButton(Worded(Phrase::Move), this);
  move->setObjectName("Move");
  auto* cancel = new QPushButton(Worded(Phrase::Cancel), this);
  cancel->setObjectName("Cancel");
  cancel->setDefault(true);
  cancel->setFocus();

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(move);
  buttons->addWidget(cancel);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(question);
  layout->addWidget(names, 1);
  layout->addLayout(buttons);
  resize(ToPixels(kQuestionWidth, *this), ToPixels(kQuestionHeight, *this));
  connect(move, &QPushButton::clicked, this, &QDialog::accept);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
}

}  // namespace vorlent::wizard
