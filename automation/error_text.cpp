#include "automation/error_text.h"

#include <algorithm>
#include <cstdint>

#include "automation/text.h"

namespace vantlo {

namespace {

struct ErrorText {
    ErrorNumber number;
    const char16_t* chinese;
    const char16_t* english;
};

consteval ErrorNumber hresult(std::uint32_t code) { return static_cast<ErrorNumber>(code); }

// clang-format off
// number, Simplified Chinese, English; ascending by number, so the HRESULTs, which are negative, come first.
constexpr ErrorText error_texts[] = {
    // COM
    {hresult(0x80004001),         u"对象没有实现这项功能。",                       u"The object does not implement this function."},
    {hresult(0x80004002),         u"对象没有所需的接口。",                         u"The object does not have the interface that is needed."},
    {hresult(0x80004003),         u"收到了无效的指针。",                           u"An invalid pointer was received."},
    {hresult(0x80004004),         u"操作已中止。",                                 u"The operation was aborted."},
    {error::unspecified,          u"操作失败，原因不明；请检查与数据库的连接。",   u"The operation failed for an unstated reason; check the connection to the database."},
    {hresult(0x8000FFFF),         u"发生了意料之外的故障。",                       u"A failure occurred that nobody foresaw."},
    {hresult(0x80010108),         u"对象已与程序断开。",                           u"The object is no longer connected to the program."},
    {hresult(0x80020003),         u"找不到对象的这个成员。",                       u"The object has no such member."},
    {hresult(0x80020004),         u"缺少一个参数。",                               u"An argument is missing."},
    {hresult(0x80020005),         u"参数的类型不符。",                             u"An argument has the wrong type."},
    {hresult(0x80020006),         u"对象不认识这个名称。",                         u"The object does not know this name."},
    {hresult(0x8002000A),         u"数值超出了参数类型的范围。",                   u"A value is outside the range of its argument's type."},
    {hresult(0x8002000E),         u"参数的个数不对。",                             u"The number of arguments is wrong."},
    {hresult(0x80040154),         u"本机没有注册这个组件。",                       u"The component is not registered on this computer."},
    // databases
    {error::cannot_convert_value, u"数据无法转换成字段的类型。",                   u"A value cannot be converted to the type of its field."},
    {error::permission_denied,    u"数据库不允许当前用户做这项操作。",             u"The database does not permit this user to do that."},
    {error::no_such_column,       u"没有这个字段，或语句缺少参数的值。",           u"There is no such field, or the statement lacks the value of a parameter."},
    {error::syntax_error,         u"数据库语句有错误。",                           u"The database statement has an error in it."},
    {hresult(0x80040E21),         u"数据库操作只完成了一部分或没有完成。",         u"The database did only part of the operation, or none of it."},
    {error::constraint_violated,  u"数据违反了表的规定，例如编号重复或缺少必填内容。", u"The data break a rule of the table, such as a repeated key or a missing value."},
    {error::time_out,             u"数据库没有在规定时间内完成操作。",             u"The database did not finish within the time allowed."},
    {error::no_such_table,        u"数据库中没有这个表。",                         u"The database has no such table."},
    {error::locked_by_another,    u"数据正被别人使用或已被别人修改，请稍后再试。", u"The data are in use or were changed by someone else; try again later."},
    {error::login_failed,         u"登录数据库失败，请检查用户名和密码。",         u"The database refused the login; check user name and password."},
    {hresult(0x80040E4E),         u"数据库操作已取消。",                           u"The database operation was cancelled."},
    {error::value_does_not_fit,   u"数据太长或太大，字段放不下。",                 u"A value is too long or too large for its field."},
    // Windows
    {hresult(0x80070005),         u"没有访问权限。",                               u"Access is denied."},
    {hresult(0x8007000E),         u"系统内存不足。",                               u"The system is short of memory."},
    {hresult(0x80070057),         u"参数的值不可用。",                             u"An argument has a value that cannot be used."},
    {hresult(0x800706BA),         u"远程服务没有响应。",                           u"The remote service does not respond."},
    // automation
    {error::invalid_call,         u"过程调用或参数无效。",                         u"The procedure call or one of its arguments is not valid."},
    {error::overflow,             u"数值超出了允许的范围。",                       u"A number is outside the range allowed."},
    {error::out_of_memory,        u"内存不足。",                                   u"There is not enough memory."},
    {9,                           u"下标超出范围。",                               u"A subscript is out of range."},
    {10,                          u"数组大小固定，或暂时被锁定。",                 u"The array is of fixed size or locked for the moment."},
    {11,                          u"除数为零。",                                   u"A number was divided by zero."},
    {error::type_mismatch,        u"数据类型不匹配。",                             u"The types of the data do not match."},
    {14,                          u"存放文字的空间不足。",                         u"There is no space left for texts."},
    {16,                          u"表达式太复杂。",                               u"The expression is too complex."},
    {18,                          u"操作被用户中断。",                             u"The user interrupted the operation."},
    {28,                          u"调用层数太多，堆栈空间不足。",                 u"Too many nested calls; the stack is full."},
    {35,                          u"没有定义这个过程或函数。",                     u"The procedure or function is not defined."},
    {48,                          u"动态链接库无法装入。",                         u"A dynamic link library could not be loaded."},
    {49,                          u"动态链接库的调用方式不对。",                   u"A dynamic link library was called in the wrong way."},
    {51,                          u"程序内部错误。",                               u"An internal error occurred."},
    {52,                          u"文件名或文件号不对。",                         u"A file name or file number is wrong."},
    {53,                          u"找不到文件。",                                 u"The file was not found."},
    {54,                          u"文件的打开方式不对。",                         u"The file was opened in the wrong mode."},
    {55,                          u"文件已经打开。",                               u"The file is open already."},
    {57,                          u"设备读写出错。",                               u"A device failed while reading or writing."},
    {58,                          u"文件已经存在。",                               u"The file exists already."},
    {61,                          u"磁盘已满。",                                   u"The disk is full."},
    {62,                          u"已读到文件末尾之后。",                         u"Reading went past the end of the file."},
    {67,                          u"打开的文件太多。",                             u"Too many files are open."},
    {68,                          u"设备不可用。",                                 u"The device is not available."},
    {70,                          u"没有权限，操作被拒绝。",                       u"Permission was refused."},
    {71,                          u"磁盘没有准备好。",                             u"The disk is not ready."},
    {75,                          u"路径或文件无法访问。",                         u"The path or file cannot be reached."},
    {76,                          u"找不到路径。",                                 u"The path was not found."},
    {error::object_not_set,       u"对象尚未设置。",                               u"An object has not been set."},
    {92,                          u"循环没有初始化。",                             u"A loop was not initialised."},
    {93,                          u"匹配模式无效。",                               u"A search pattern is not valid."},
    {error::invalid_use_of_null,  u"此处不能使用空值。",                           u"A null value cannot be used here."},
    {97,                          u"只有本类的对象才能调用友元过程。",             u"A friend procedure can be called only on an object of its own class."},
    {321,                         u"文件格式无效。",                               u"The format of the file is not valid."},
    {322,                         u"无法建立必需的临时文件。",                     u"A temporary file that is needed could not be made."},
    {328,                         u"参数无效，不能写入数组。",                     u"The argument is not valid; arrays cannot be written."},
    {335,                         u"无法访问系统注册表。",                         u"The system registry could not be reached."},
    {336,                         u"组件没有正确注册。",                           u"The component is not properly registered."},
    {337,                         u"找不到组件。",                                 u"The component was not found."},
    {338,                         u"组件没有正常运行。",                           u"The component did not run properly."},
    {380,                         u"属性值无效。",                                 u"The value of a property is not valid."},
    {381,                         u"属性数组的下标无效。",                         u"The index of a property array is not valid."},
    {382,                         u"运行时不能设置这个属性。",                     u"The property cannot be set while the program runs."},
    {383,                         u"属性是只读的，不能设置。",                     u"The property can only be read."},
    {385,                         u"需要属性数组的下标。",                         u"A property array needs an index."},
    {387,                         u"此处不允许设置这个属性。",                     u"The property may not be set here."},
    {393,                         u"运行时不能读取这个属性。",                     u"The property cannot be read while the program runs."},
    {394,                         u"属性是只写的，不能读取。",                     u"The property can only be written."},
    {419,                         u"不允许使用这个对象。",                         u"This object may not be used."},
    {422,                         u"找不到属性。",                                 u"The property was not found."},
    {423,                         u"找不到属性或方法。",                           u"The property or method was not found."},
    {error::object_required,      u"此处需要一个对象。",                           u"An object is needed here."},
    {425,                         u"对象的用法无效。",                             u"The object was used in a way that is not valid."},
    {429,                         u"无法创建组件的对象。",                         u"The component could not create its object."},
    {error::no_such_interface,    u"对象的类不支持自动化或所需的接口。",           u"The object's class does not support automation or the interface expected."},
    {432,                         u"自动化操作找不到文件名或类名。",               u"Automation did not find the file name or class name."},
    {error::no_such_member,       u"对象没有这个属性或方法。",                     u"The object has no such property or method."},
    {error::automation_error,     u"自动化操作出错。",                             u"An automation operation failed."},
    {442,                         u"与远程程序的类型库或对象库的连接已断开。",     u"The connection to the library of a remote program was lost."},
    {443,                         u"对象没有默认值。",                             u"The object has no default value."},
    {error::no_such_action,       u"对象不支持这个动作。",                         u"The object does not support this action."},
    {446,                         u"对象不支持命名参数。",                         u"The object does not support named arguments."},
    {447,                         u"对象不支持当前的区域设置。",                   u"The object does not support the current regional settings."},
    {448,                         u"找不到命名参数。",                             u"A named argument was not found."},
    {449,                         u"缺少必需的参数，或属性赋值无效。",             u"A required argument is missing, or a property was set in the wrong way."},
    {450,                         u"参数个数不对，或属性赋值无效。",               u"The number of arguments is wrong, or a property was set in the wrong way."},
    {451,                         u"对象不是集合。",                               u"The object is not a collection."},
    {452,                         u"序号无效。",                                   u"An ordinal number is not valid."},
    {453,                         u"动态链接库中没有这个函数。",                   u"The dynamic link library has no such function."},
    {454,                         u"找不到代码资源。",                             u"A code resource was not found."},
    {455,                         u"代码资源锁定出错。",                           u"A code resource could not be locked."},
    {457,                         u"集合中已有这个关键字。",                       u"The collection has an element of this key already."},
    {458,                         u"变量的类型不受支持。",                         u"The type of a variable is not supported."},
    {459,                         u"对象不支持这组事件。",                         u"The object does not support this set of events."},
    {460,                         u"剪贴板的格式无效。",                           u"The format of the clipboard is not valid."},
    {462,                         u"远程服务器不存在或不可用。",                   u"The remote server does not exist or is not available."},
    {463,                         u"本机没有注册这个类。",                         u"The class is not registered on this computer."},
    // recordsets and connections
    {3000,                        u"数据提供程序没有完成所要求的操作。",           u"The data provider did not do what was asked of it."},
    {error::bad_argument,         u"参数类型不对、超出范围或互相矛盾。",           u"Arguments are of the wrong type, out of range or in conflict."},
    {3002,                        u"文件打不开。",                                 u"The file could not be opened."},
    {3003,                        u"文件读不出来。",                               u"The file could not be read."},
    {3004,                        u"文件写不进去。",                               u"The file could not be written."},
    {error::no_current_row,       u"没有当前记录，记录集为空或已到头尾。",         u"There is no current record: the recordset is empty or at one of its ends."},
    {3219,                        u"当前情况下不允许这项操作。",                   u"The operation is not allowed in this situation."},
    {3246,                        u"事务进行中不能关闭连接。",                     u"The connection cannot be closed during a transaction."},
    {3251,                        u"数据提供程序不支持这项操作。",                 u"The data provider does not support this operation."},
    {error::no_such_item,         u"找不到这个名称或序号的字段。",                 u"There is no field of this name or number."},
    {3367,                        u"集合中已有这个对象，不能再加入。",             u"The object is in the collection already."},
    {3420,                        u"对象已经失效。",                               u"The object is no longer valid."},
    {3421,                        u"值的类型不适合这项操作。",                     u"A value is of the wrong type for this operation."},
    {error::object_closed,        u"连接或记录集已关闭，不能操作。",               u"The connection or recordset is closed."},
    {error::object_open,          u"连接或记录集已打开，不能操作。",               u"The connection or recordset is open already."},
    {3706,                        u"找不到数据提供程序，可能没有正确安装。",       u"The data provider was not found; it may not be installed properly."},
    {3707,                        u"记录集来自命令对象，不能更换它的连接。",       u"The recordset comes from a command; its connection cannot be changed."},
    {3708,                        u"命令参数的定义不正确。",                       u"A parameter of the command is not properly defined."},
    {error::no_connection,        u"没有可用的数据库连接。",                       u"There is no usable connection to the database."},
    {3710,                        u"处理事件时不能再做这项操作。",                 u"The operation cannot be done again while its event is handled."},
    {3711,                        u"上一项操作还在进行。",                         u"The previous operation is still running."},
    {3712,                        u"操作已被取消。",                               u"The operation was cancelled."},
    {3713,                        u"还在连接数据库。",                             u"The connection is still being made."},
    {3714,                        u"事务无效或尚未开始。",                         u"The transaction is not valid or has not begun."},
    {3715,                        u"没有正在进行的操作。",                         u"No operation is running."},
    {3716,                        u"安全设置禁止访问其他网域的数据。",             u"The security settings forbid reaching data of another domain."},
    {3719,                        u"值违反了数据完整性的规定。",                   u"A value breaks an integrity rule of the data."},
    {3720,                        u"没有写入这个字段的权限。",                     u"There is no permission to write this field."},
    {3721,                        u"值太大，超出字段类型的范围。",                 u"A value is too large for the type of its field."},
    {3722,                        u"值与字段的类型或规定相冲突。",                 u"A value conflicts with the type or the rules of its field."},
    {3723,                        u"值有正负号，而字段不能有。",                   u"A value has a sign but its field can have none."},
    {3724,                        u"字段的值无法转换。",                           u"The value of a field cannot be converted."},
    {3725,                        u"字段类型未知，无法建立或转换这个值。",         u"The type of a field is unknown, so its value cannot be made or converted."},
    {3726,                        u"这条记录没有这个字段。",                       u"The record has no such field."},
    {3727,                        u"这个网址不存在。",                             u"The address does not exist."},
    {3728,                        u"没有查看这个目录的权限。",                     u"There is no permission to view this folder tree."},
    {3729,                        u"网址中有无效的字符。",                         u"The address has characters that are not valid."},
    {3730,                        u"资源被别的程序锁定。",                         u"The resource is locked by another program."},
    {3731,                        u"目标位置已有同名资源。",                       u"A resource of this name is at the destination already."},
    {3732,                        u"服务器无法完成操作。",                         u"The server could not complete the operation."},
    {3733,                        u"找不到网址所指的存储设备。",                   u"The storage that the address names was not found."},
    {3734,                        u"存储空间不足，操作没有完成。",                 u"The storage has no space left for the operation."},
    {3735,                        u"网址超出了当前记录的范围。",                   u"The address is outside the scope of the current record."},
    {3736,                        u"操作没有完成，它的状态不可知。",               u"The operation did not complete and its state is unknown."},
    {3737,                        u"网址所指的记录不存在。",                       u"The record that the address names does not exist."},
    {3738,                        u"要删除的内容超出了当前记录的范围。",           u"What was to be deleted is outside the scope of the current record."},
    {3747,                        u"操作需要先指定数据库目录。",                   u"The operation needs a catalogue to be set first."},
    {3748,                        u"连接被拒绝，新连接的性质与原来的不同。",       u"The connection was refused because it differs in kind from the one in use."},
    {3749,                        u"字段更新失败。",                               u"The fields could not be updated."},
    {3750,                        u"数据提供程序不支持共享限制。",                 u"The data provider does not support sharing restrictions."},
    {3751,                        u"数据提供程序不支持所要求的共享限制。",         u"The data provider does not support the sharing restriction asked for."},
};
// clang-format on
static_assert(std::ranges::adjacent_find(error_texts, std::ranges::greater_equal{}, &ErrorText::number) ==
                  std::ranges::end(error_texts),
              "binary search needs ascending numbers, each once");

constexpr ErrorText any_other_number = {
    0, u"发生错误，操作没有完成，请与系统管理员联系。",
    u"An error occurred and the operation was not completed; please tell the system's administrator."};

}  // namespace

const char16_t* standard_text(ErrorNumber number, Language language) noexcept {
    const auto* const found = std::ranges::lower_bound(error_texts, number, {}, &ErrorText::number);
    const bool listed = found != std::ranges::end(error_texts) && found->number == number;
    const ErrorText& row = listed ? *found : any_other_number;
    return language == Language::chinese ? row.chinese : row.english;
}

std::string account_of(const Failure& failure, Language language) {
    const std::string account = failure.what();
    return account.empty() ? to_utf8(standard_text(failure.number(), language)) : account;
}

}  // namespace vantlo
