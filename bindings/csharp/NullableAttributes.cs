#if !NETCOREAPP
namespace System.Diagnostics.CodeAnalysis
{
    // Older run-times do not have these; the compiler knows them by their names.
    [AttributeUsage(AttributeTargets.Property | AttributeTargets.Field | AttributeTargets.Parameter)]
    internal sealed class AllowNullAttribute : Attribute { }

    [AttributeUsage(AttributeTargets.Property | AttributeTargets.Field | AttributeTargets.ReturnValue)]
    internal sealed class MaybeNullAttribute : Attribute { }
}
#endif
